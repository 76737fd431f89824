#include "token/discovery/token_containers.h"

#include "binary/hex.h"
#include "core/errors.h"
#include "core/exception.h"
#include "core/json.h"
#include "core/log.h"
#include "core/utf8.h"
#include "token/cryptoki/container_path.h"
#include "token/cryptoki/cryptoki_exception.h"
#include "token/cryptoki/driver_path.h"
#include "token/cryptoki/session.h"
#include "token/discovery/tokens.h"

#include <json/value.h>

#include <algorithm>
#include <set>

namespace Corvane::Crypto {
namespace {

bool isSlot(std::wstring_view id) noexcept {
    return id.find(cryptoki::jaCartaMark) != std::wstring_view::npos ||
           id.find(cryptoki::rutokenMark) != std::wstring_view::npos;
}

std::wstring slotOf(const std::wstring& tokenId) {
    if (isSlot(tokenId))
        return tokenId;
    for (const Token& token : detail::getTokens()) {
        if (token.serialNumber == tokenId)
            return token.slot;
    }
    throw Exception(E_TOKEN_SLOT);
}

std::wstring nameOf(const Bytes& identifier) {
    // A backslash would be the end of a path's part.
    const bool isText =
        std::ranges::all_of(identifier, [](std::uint8_t c) { return c >= 0x20 && c < 0x7F && c != '\\'; });
    return isText ? std::wstring(identifier.begin(), identifier.end()) : binToHex(identifier);
}

// Empty for a key without one, which the module may say is an error.
Bytes identifierOf(const cryptoki::Session& session, CK_OBJECT_HANDLE key) {
    try {
        return session.getAttributeValue(key, CKA_ID);
    } catch (const cryptoki::CryptokiException& exception) {
        if (exception.value() != CKR_ATTRIBUTE_TYPE_INVALID)
            throw;
        return {};
    }
}

std::set<std::wstring> containerNames(const std::wstring& slot) {
    using cryptoki::AttributeTemplate;
    const auto module = cryptoki::Pkcs11Module::load(cryptoki::driverPathFor(slot));
    const cryptoki::Session session(module, module.findSlot(slot), CKF_SERIAL_SESSION);
    std::set<std::wstring> names;
    for (const CK_OBJECT_HANDLE key : session.findObjects(
             AttributeTemplate().number(CKA_CLASS, CKO_PUBLIC_KEY).boolean(CKA_TOKEN, true))) {
        if (const Bytes identifier = identifierOf(session, key); !identifier.empty())
            names.insert(nameOf(identifier));
    }
    return names;
}

}  // namespace

std::wstring getTokenContainers(const std::wstring& tokenId) {
    writeLog(LogLevel::debug, L"Corvane::Crypto::getTokenContainers", L"[in] token id: ", tokenId);
    const std::wstring slot = slotOf(tokenId);
    Json::Value list(Json::arrayValue);
    for (const std::wstring& name : containerNames(slot)) {
        Json::Value& item = list.append(Json::Value());
        item["containerName"] = toUtf8(name);
        item["path"] = toUtf8(cryptoki::makeContainerPath(slot, name));
    }
    return writeJson(list);
}

}  // namespace Corvane::Crypto
