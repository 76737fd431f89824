#include "crypto/certificate/certificate_filter.h"

#include "binary/hex.h"
#include "core/exception.h"
#include "core/json.h"
#include "core/log.h"
#include "core/wide_text.h"
#include "crypto/certificate/certificate_store.h"

#include <json/value.h>

#include <new>
#include <stdexcept>

namespace Corvane::detail {
namespace {

// The conversions of jsoncpp turn numbers into texts and flags; here every key has its one type.
std::string toText(const Json::Value& value) {
    if (!value.isString())
        throw std::invalid_argument("Not a string");
    return value.asString();
}

bool toFlag(const Json::Value& value) {
    if (!value.isBool())
        throw std::invalid_argument("Not a boolean");
    return value.asBool();
}

SharedBytes toBytes(const Json::Value& value) {
    return std::make_shared<Bytes>(hexToBin(toText(value)));
}

bool asks(const SharedBytes& bytes) {
    return bytes && !bytes->empty();
}

// Calls `read` with the member's value; members that are absent or null are left out.
template <class Read>
void readMember(const Json::Value& object, const char* key, Read read) {
    const Json::Value& value = object[key];
    if (!value.isNull())
        read(value);
}

CertCustomFilterFn readFilter(const Json::Value& object) {
    CertCustomFilterFn filter;
    readMember(object, "name", [&](const auto& value) { filter.name = fromUtf8(toText(value)); });
    readMember(object, "storeName", [&](const auto& value) { filter.storeName = fromUtf8(toText(value)); });
    readMember(object, "storeLocation",
               [&](const auto& value) { filter.storeLocation = parseStoreLocation(value); });
    readMember(object, "hasPrivateKeyOnly",
               [&](const auto& value) { filter.privateKeyOnly = toFlag(value); });
    readMember(object, "hash", [&](const auto& value) { filter.hash = toBytes(value); });
    readMember(object, "serialNumber", [&](const auto& value) { filter.serialNumber = toBytes(value); });
    readMember(object, "archived", [&](const auto& value) {
        filter.archived = toFlag(value);
        filter.archivedGiven = true;
    });
    return filter;
}

}  // namespace

CertCustomFilterFn CertCustomFilterFn::parse(std::wstring_view text) {
    writeLog(LogLevel::debug, L"Corvane::detail::CertCustomFilterFn::parse", L"[in] text: ", text);
    if (text.empty())
        return {};
    const Json::Value root = parseJson(text);
    if (!root.isObject())
        return {};
    try {
        return readFilter(root);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& exception) {
        writeLog(LogLevel::error, L"Corvane::detail::CertCustomFilterFn::parse", exception.what());
        throw Exception(E_CERT_JSON_FILTER);
    }
}

bool CertCustomFilterFn::operator()(const SharedCertificate& certificate) const {
    if (privateKeyOnly && !certificate->hasPrivateKey())
        return false;
    if (!name.empty() && certificate->getName(false) != name)
        return false;
    if (asks(serialNumber) && certificate->getSerialNumber() != *serialNumber)
        return false;
    if (asks(hash) && !certificate->hasHash(*hash))
        return false;
    return !archivedGiven || certificate->getArchived() == archived;
}

unsigned parseStoreLocation(const Json::Value& value) {
    if (value == "machine")
        return machineStores;
    if (value == "user")
        return userStores;
    if (value.isInt() && (value.asInt() == machineStores || value.asInt() == userStores))
        return value.asUInt();
    throw std::invalid_argument("Invalid store location");
}

}  // namespace Corvane::detail
