#include "token/enroll/request_on_token.h"

#include "binary/base64.h"
#include "binary/hex.h"
#include "core/check.h"
#include "core/json.h"
#include "core/log.h"
#include "core/utf8.h"
#include "token/cryptoki/container_path.h"
#include "token/cryptoki/cryptoki_exception.h"
#include "token/cryptoki/driver_path.h"
#include "token/cryptoki/session.h"
#include "token/enroll/user_sid.h"

#include <json/value.h>
#include <objbase.h>

#include <array>

namespace Corvane {
namespace {

using cryptoki::AttributeTemplate;
using cryptoki::Session;

constexpr wchar_t context[] = L"Corvane::CryptoApiProvider::createCertificationRequestGOST";

void logInputs(const std::wstring& slot, const detail::RequestParts& parts) {
    if (!isLogEnabled(LogLevel::debug))
        return;
    writeLog(LogLevel::debug, context, L"slot: ", slot);
    writeLog(LogLevel::debug, context, L"distinguished name: ", binToHex(parts.distinguishedName));
    writeLog(LogLevel::debug, context, L"extensions: ", binToHex(parts.extensions));
    writeLog(LogLevel::debug, context, L"enrollmentParameters: ",
             parts.enrollmentParameters ? binToHex(*parts.enrollmentParameters) : L"nullptr");
}

// Text, since it is a part of the container's path; unlike any other.
std::wstring makeIdentifier() {
    GUID guid{};
    checkHresult(::CoCreateGuid(&guid), E_CRYPTO_GEN_KEY, L"CoCreateGuid");
    std::array<wchar_t, 39> text{};
    ::StringFromGUID2(guid, text.data(), static_cast<int>(text.size()));
    return {text.begin() + 1, text.begin() + 37};
}

cryptoki::KeyPair generateKeyPair(const Session& session, std::wstring_view identifier) {
    const Bytes id(identifier.begin(), identifier.end());
    return session.generateKeyPair(CKM_GOSTR3410_KEY_PAIR_GEN,
                                   AttributeTemplate()
                                       .number(CKA_CLASS, CKO_PUBLIC_KEY)
                                       .number(CKA_KEY_TYPE, CKK_GOSTR3410)
                                       .boolean(CKA_VERIFY, true)
                                       .boolean(CKA_PRIVATE, false)
                                       .boolean(CKA_TOKEN, true)
                                       .bytes(CKA_ID, id)
                                       .identifier(CKA_GOSTR3410_PARAMS, detail::gostSignatureParameters)
                                       .identifier(CKA_GOSTR3411_PARAMS, detail::gostHashParameters),
                                   AttributeTemplate()
                                       .number(CKA_CLASS, CKO_PRIVATE_KEY)
                                       .number(CKA_KEY_TYPE, CKK_GOSTR3410)
                                       .boolean(CKA_SIGN, true)
                                       .boolean(CKA_PRIVATE, true)
                                       .boolean(CKA_TOKEN, true)
                                       .boolean(CKA_DERIVE, true)
                                       .bytes(CKA_ID, id)
                                       .identifier(CKA_GOSTR3410_PARAMS, detail::gostSignatureParameters));
}

// Public keys and signatures of GOST R 34.10-2001 are two numbers of 256 bits each (RFC 4491 2.2.2, 2.3.2).
Bytes twoNumbers(Bytes value, const char* call) {
    cryptoki::checkCryptoki(value.size() == 64 ? CKR_OK : CKR_DATA_LEN_RANGE, call);
    return value;
}

Bytes makeRequest(const Session& session, const cryptoki::KeyPair& keys, const detail::RequestParts& parts) {
    const Bytes key = twoNumbers(session.getAttributeValue(keys.publicKey, CKA_VALUE), "C_GetAttributeValue");
    const Bytes info = detail::encodeGostRequestInfo(parts, key);
    std::array<std::uint8_t, 32> digest{};
    session.digest(CKM_GOSTR3411, info, digest);
    return detail::encodeGostRequest(
        info, twoNumbers(session.sign(CKM_GOSTR3410, keys.privateKey, digest), "C_Sign"));
}

}  // namespace

std::wstring createCertificationRequestGOST(const std::wstring& slot, SecretNarrowText pin,
                                            const detail::RequestParts& parts) {
    logInputs(slot, parts);
    const std::wstring driver = cryptoki::driverPathFor(slot);
    writeLog(LogLevel::debug, context, L"driver path: ", driver);
    const auto module = cryptoki::Pkcs11Module::load(driver);
    Session session(module, module.findSlot(slot), CKF_SERIAL_SESSION | CKF_RW_SESSION);
    session.login(pin);

    // Whatever can fail without the token fails before there are keys on it.
    detail::checkRequestParts(parts);
    const std::wstring sid = detail::getUserSid();
    const std::wstring identifier = makeIdentifier();

    const cryptoki::KeyPair keys = generateKeyPair(session, identifier);
    Json::Value result;
    result["path"] = toUtf8(cryptoki::makeContainerPath(slot, identifier));
    result["request"] = toUtf8(binToBase64(makeRequest(session, keys, parts), base64NoLineBreaks));
    result["sid"] = toUtf8(sid);
    return writeJson(result);
}

}  // namespace Corvane
