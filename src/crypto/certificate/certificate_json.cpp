#include "crypto/certificate/certificate_json.h"

#include "binary/hex.h"
#include "core/json.h"
#include "core/log.h"
#include "core/moment.h"
#include "core/wide_text.h"

#include <utility>

namespace Corvane::Crypto {
namespace {

// Object identifiers of subject attributes: X.520, PKCS #9, and two of a national registration authority.
constexpr std::pair<const char*, const char*> attributes[] = {
    {"SN", "2.5.4.4"},           {"ON", "2.5.4.10"},           {"UN", "1.2.840.113549.1.9.2"},
    {"RN", "1.2.643.3.141.1.1"}, {"WRO", "1.2.643.3.141.1.2"},
};

std::string utf8(const wchar_t* text) {
    return text ? toUtf8(text) : std::string();
}

}  // namespace

std::wstring getCertDescriptionJson(const Certificate& certificate) {
    writeLog(LogLevel::debug, L"Corvane::Crypto::getCertDescriptionJson", L"[in] certificate: ", certificate);
    Json::Value description(Json::objectValue);
    description["CN"] = toUtf8(certificate.getName(false));
    description["Hash"] = toUtf8(binToHex(certificate.getHash()));
    description["SerialNumber"] = toUtf8(binToHex(certificate.getSerialNumber()));
    description["IssuerCN"] = toUtf8(certificate.getName(true));
    description["ValidTo"] = toUtf8(toUtcText(certificate.getValidTo()));
    description["ValidFrom"] = toUtf8(toUtcText(certificate.getValidFrom()));
    for (const auto& [key, oid] : attributes)
        description[key] = toUtf8(certificate.getSubjectAttribute(oid));
    return writeJson(description);
}

std::wstring getContainerInfoJson(const Certificate& certificate) {
    writeLog(LogLevel::debug, L"Corvane::Crypto::getContainerInfoJson", L"[in] certificate: ", certificate);
    const Bytes property = certificate.getCertProperty(CERT_KEY_PROV_INFO_PROP_ID);
    const auto& key = *reinterpret_cast<const CRYPT_KEY_PROV_INFO*>(property.data());
    Json::Value info(Json::objectValue);
    info["containerName"] = utf8(key.pwszContainerName);
    info["providerName"] = utf8(key.pwszProvName);
    info["providerType"] = static_cast<Json::UInt>(key.dwProvType);
    return writeJson(info);
}

}  // namespace Corvane::Crypto
