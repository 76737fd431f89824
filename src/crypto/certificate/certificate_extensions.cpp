#include "crypto/certificate/certificate_extensions.h"

#include "asn1/decoders/x509_extensions.h"
#include "core/exception.h"
#include "core/json.h"
#include "core/log.h"

namespace Corvane::Crypto {
namespace {

constexpr wchar_t context[] = L"Corvane::Crypto::getCertExtensionJson";

using Reader = std::vector<std::string> (*)(asn1::View);

// An extension that cannot be read does not hide the others.
Json::Value readArray(const std::vector<asn1::Extension>& extensions, std::string_view oid, Reader read) {
    Json::Value array(Json::arrayValue);
    const asn1::Extension* extension = asn1::findExtension(extensions, oid);
    if (!extension)
        return array;
    try {
        for (const std::string& item : read(extension->value))
            array.append(item);
        return array;
    } catch (const asn1::Asn1Exception& error) {
        writeLog(LogLevel::warning, context, extension->oid.c_str(), L": ", error.what());
        return {Json::arrayValue};
    }
}

std::vector<asn1::Extension> readExtensions(const Certificate& certificate) {
    try {
        return asn1::readExtensions(certificate.getContent());
    } catch (const asn1::Asn1Exception& error) {
        writeLog(LogLevel::error, context, error.what());
        throw Exception(E_CERT_EXT_DECODE);
    }
}

}  // namespace

std::wstring getCertExtensionJson(const Certificate& certificate) {
    writeLog(LogLevel::debug, context, L"[in] certificate: ", certificate);
    const std::vector<asn1::Extension> extensions = readExtensions(certificate);
    Json::Value json(Json::objectValue);
    json["keyUsages"] = readArray(extensions, asn1::keyUsageOid, asn1::readKeyUsages);
    json["extendedKeyUsages"] = readArray(extensions, asn1::extendedKeyUsageOid, asn1::readExtendedKeyUsages);
    json["policies"] = readArray(extensions, asn1::certificatePoliciesOid, asn1::readPolicies);
    return writeJson(json);
}

}  // namespace Corvane::Crypto
