#include "crypto/certificate_extensions.h"

#include "asn1/certificate_extensions.h"
#include "core/json.h"
#include "core/log.h"

namespace Corvane::Crypto {
namespace {

using Reader = std::vector<std::string> (*)(asn1::View);

Json::Value readArray(const std::vector<asn1::Extension>& extensions, std::string_view oid, Reader read) {
    Json::Value array(Json::arrayValue);
    const asn1::Extension* extension = asn1::findExtension(extensions, oid);
    if (!extension)
        return array;
    for (const std::string& item : read(extension->value))
        array.append(item);
    return array;
}

}  // namespace

std::wstring getCertExtensionJson(const Certificate& certificate) {
    writeLog(LogLevel::debug, L"Corvane::Crypto::getCertExtensionJson", L"[in] certificate: ", certificate);
    const Bytes content = certificate.getContent();
    const std::vector<asn1::Extension> extensions = asn1::readExtensions(content);
    Json::Value json(Json::objectValue);
    json["keyUsages"] = readArray(extensions, asn1::keyUsageOid, asn1::readKeyUsages);
    json["extendedKeyUsages"] = readArray(extensions, asn1::extendedKeyUsageOid, asn1::readExtendedKeyUsages);
    json["policies"] = readArray(extensions, asn1::certificatePoliciesOid, asn1::readPolicies);
    return writeJson(json);
}

}  // namespace Corvane::Crypto
