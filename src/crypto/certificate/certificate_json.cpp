#include "crypto/certificate/certificate_json.h"

#include "binary/hex.h"
#include "core/json.h"
#include "core/log.h"
#include "core/moment.h"
#include "core/system_exception.h"
#include "core/wide_text.h"

#include <utility>

namespace Corvane::Crypto {
namespace {

// Object identifiers of subject attributes: X.520, PKCS #9, and two of a national registration authority.
constexpr std::pair<const char*, const char*> attributes[] = {
    {"SN", "2.5.4.4"},           {"ON", "2.5.4.10"},           {"UN", "1.2.840.113549.1.9.2"},
    {"RN", "1.2.643.3.141.1.1"}, {"WRO", "1.2.643.3.141.1.2"},
};

// As wincrypt.h has them.
constexpr std::pair<DWORD, const char*> trustStatusBits[] = {
    {CERT_TRUST_IS_NOT_TIME_VALID, "CERT_TRUST_IS_NOT_TIME_VALID"},
    {CERT_TRUST_IS_NOT_TIME_NESTED, "CERT_TRUST_IS_NOT_TIME_NESTED"},
    {CERT_TRUST_IS_REVOKED, "CERT_TRUST_IS_REVOKED"},
    {CERT_TRUST_IS_NOT_SIGNATURE_VALID, "CERT_TRUST_IS_NOT_SIGNATURE_VALID"},
    {CERT_TRUST_IS_NOT_VALID_FOR_USAGE, "CERT_TRUST_IS_NOT_VALID_FOR_USAGE"},
    {CERT_TRUST_IS_UNTRUSTED_ROOT, "CERT_TRUST_IS_UNTRUSTED_ROOT"},
    {CERT_TRUST_REVOCATION_STATUS_UNKNOWN, "CERT_TRUST_REVOCATION_STATUS_UNKNOWN"},
    {CERT_TRUST_IS_CYCLIC, "CERT_TRUST_IS_CYCLIC"},
    {CERT_TRUST_INVALID_EXTENSION, "CERT_TRUST_INVALID_EXTENSION"},
    {CERT_TRUST_INVALID_POLICY_CONSTRAINTS, "CERT_TRUST_INVALID_POLICY_CONSTRAINTS"},
    {CERT_TRUST_INVALID_BASIC_CONSTRAINTS, "CERT_TRUST_INVALID_BASIC_CONSTRAINTS"},
    {CERT_TRUST_INVALID_NAME_CONSTRAINTS, "CERT_TRUST_INVALID_NAME_CONSTRAINTS"},
    {CERT_TRUST_HAS_NOT_SUPPORTED_NAME_CONSTRAINT, "CERT_TRUST_HAS_NOT_SUPPORTED_NAME_CONSTRAINT"},
    {CERT_TRUST_HAS_NOT_DEFINED_NAME_CONSTRAINT, "CERT_TRUST_HAS_NOT_DEFINED_NAME_CONSTRAINT"},
    {CERT_TRUST_HAS_NOT_PERMITTED_NAME_CONSTRAINT, "CERT_TRUST_HAS_NOT_PERMITTED_NAME_CONSTRAINT"},
    {CERT_TRUST_HAS_EXCLUDED_NAME_CONSTRAINT, "CERT_TRUST_HAS_EXCLUDED_NAME_CONSTRAINT"},
    {CERT_TRUST_IS_PARTIAL_CHAIN, "CERT_TRUST_IS_PARTIAL_CHAIN"},
    {CERT_TRUST_CTL_IS_NOT_TIME_VALID, "CERT_TRUST_CTL_IS_NOT_TIME_VALID"},
    {CERT_TRUST_CTL_IS_NOT_SIGNATURE_VALID, "CERT_TRUST_CTL_IS_NOT_SIGNATURE_VALID"},
    {CERT_TRUST_CTL_IS_NOT_VALID_FOR_USAGE, "CERT_TRUST_CTL_IS_NOT_VALID_FOR_USAGE"},
    {CERT_TRUST_HAS_WEAK_SIGNATURE, "CERT_TRUST_HAS_WEAK_SIGNATURE"},
    {CERT_TRUST_IS_OFFLINE_REVOCATION, "CERT_TRUST_IS_OFFLINE_REVOCATION"},
    {CERT_TRUST_NO_ISSUANCE_CHAIN_POLICY, "CERT_TRUST_NO_ISSUANCE_CHAIN_POLICY"},
    {CERT_TRUST_IS_EXPLICIT_DISTRUST, "CERT_TRUST_IS_EXPLICIT_DISTRUST"},
    {CERT_TRUST_HAS_NOT_SUPPORTED_CRITICAL_EXT, "CERT_TRUST_HAS_NOT_SUPPORTED_CRITICAL_EXT"},
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

std::vector<std::string> getTrustStatusNames(DWORD status) {
    std::vector<std::string> names;
    for (const auto& [bit, name] : trustStatusBits) {
        if ((status & bit) != 0)
            names.emplace_back(name);
        status &= ~bit;
    }
    if (status != 0)
        names.push_back(toUtf8(hexNumber(status)));
    return names;
}

}  // namespace Corvane::Crypto
