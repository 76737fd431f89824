#include "crypto/request/request_json.h"

#include "asn1/pkix/extensions.h"
#include "asn1/pkix/name.h"
#include "binary/base64.h"
#include "core/exception.h"
#include "core/log.h"
#include "core/utf8.h"
#include "crypto/request/distinguished_name.h"

#include <json/value.h>

#include <algorithm>

namespace Corvane::Crypto {
namespace {

constexpr wchar_t context[] = L"Corvane::Crypto::decodeCertificationRequest";

using Reader = std::vector<std::string> (*)(asn1::View);

std::string base64(const Bytes& bytes) {
    return toUtf8(binToBase64(bytes, base64NoLineBreaks));
}

// What `read` returns, or nothing where it is not as it should be, which is said in the log.
template <class Result, class Read>
Result orNothing(Read read) {
    try {
        return read();
    } catch (const asn1::Asn1Exception& error) {
        writeLog(LogLevel::warning, context, error.what());
        return {};
    }
}

std::vector<asn1::Extension> extensionsOf(const asn1::CertificationRequest& request) {
    const auto& attributes = request.info.attributes;
    const auto found = std::ranges::find(attributes, asn1::extensionRequestOid, &asn1::Attribute::oid);
    if (found == attributes.end())
        return {};
    using Extensions = std::vector<asn1::Extension>;
    return orNothing<Extensions>([&] { return asn1::decodeExtensions(found->values.front()); });
}

Json::Value readArray(const std::vector<asn1::Extension>& extensions, std::string_view oid, Reader read) {
    Json::Value array(Json::arrayValue);
    if (const asn1::Extension* extension = asn1::findExtension(extensions, oid)) {
        using Texts = std::vector<std::string>;
        for (const std::string& item : orNothing<Texts>([&] { return read(extension->value); }))
            array.append(item);
    }
    return array;
}

Json::Value describe(const asn1::Extension& extension) {
    Json::Value json(Json::objectValue);
    json["oid"] = extension.oid;
    json["critical"] = extension.critical;
    json["value"] = base64(extension.value);
    return json;
}

Json::Value describe(const asn1::Attribute& attribute) {
    Json::Value json(Json::objectValue);
    json["oid"] = attribute.oid;
    json["values"] = Json::arrayValue;
    for (const Bytes& value : attribute.values)
        json["values"].append(base64(value));
    return json;
}

template <class Items>
Json::Value describeAll(const Items& items) {
    Json::Value array(Json::arrayValue);
    for (const auto& item : items)
        array.append(describe(item));
    return array;
}

}  // namespace

asn1::CertificationRequest decodeCertificationRequest(asn1::View der) {
    writeLog(LogLevel::debug, context, L"[in] bytes: ", der.size());
    try {
        return asn1::decodeRequest(der);
    } catch (const asn1::Asn1Exception& error) {
        writeLog(LogLevel::error, context, error.what());
        throw Exception(E_CERTIFICATION_REQUEST);
    }
}

Json::Value describeRequest(const asn1::CertificationRequest& request) {
    const std::vector<asn1::Extension> extensions = extensionsOf(request);
    Json::Value json(Json::objectValue);
    json["subject"] = toUtf8(distinguishedNameText(asn1::decodeName(request.info.subject)));
    json["publicKeyAlgorithm"] = request.info.publicKey.algorithm.oid;
    json["publicKey"] = base64(asn1::encodePublicKeyInfo(request.info.publicKey));
    json["signatureAlgorithm"] = request.signatureAlgorithm.oid;
    json["keyUsages"] = readArray(extensions, asn1::keyUsageOid, asn1::readKeyUsages);
    json["extendedKeyUsages"] = readArray(extensions, asn1::extendedKeyUsageOid, asn1::readExtendedKeyUsages);
    json["policies"] = readArray(extensions, asn1::certificatePoliciesOid, asn1::readPolicies);
    json["extensions"] = describeAll(extensions);
    json["attributes"] = describeAll(request.info.attributes);
    return json;
}

}  // namespace Corvane::Crypto
