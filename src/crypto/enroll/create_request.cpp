#include "crypto/enroll/create_request.h"

#include "binary/base64.h"
#include "binary/hex.h"
#include "core/json.h"
#include "core/log.h"
#include "core/two_pass.h"
#include "core/wide_text.h"
#include "crypto/api/decode.h"
#include "crypto/api/encoding.h"
#include "crypto/enroll/key_container.h"

#include <json/value.h>

#include <utility>

namespace Corvane {
namespace {

// Structures of CryptoAPI take text and bytes that they do not change as changeable ones.
char extensionRequest[] = "1.2.840.113549.1.9.14";  // RFC 2985 5.4.2
char gostSignature[] = "1.2.643.2.2.3";             // RFC 4491 2.2.1

CRYPT_DATA_BLOB blobOf(Bytes& bytes) {
    return {static_cast<DWORD>(bytes.size()), bytes.data()};
}

std::wstring hexOf(const SharedBytes& bytes) {
    return bytes ? binToHex(*bytes) : L"nullptr";
}

void logParameters(const wchar_t* context, const ProviderRecord& record, const RequestParameters& parameters,
                   bool extended) {
    if (!isLogEnabled(LogLevel::debug))
        return;
    writeLog(LogLevel::debug, context, L"provider name: ", record.name, L", provider type: ", record.type);
    writeLog(LogLevel::debug, context, L"[in]container name: ", parameters.containerName, L" [in]key spec: ",
             parameters.keySpec, L" [in]exportable: ", parameters.exportable, L" [in]silent: ",
             parameters.silent);
    writeLog(LogLevel::debug, context, L"[in]distinguished name: ", hexOf(parameters.distinguishedName),
             L" [in]extensions: ", hexOf(parameters.extensions));
    if (extended)
        writeLog(LogLevel::debug, context, L"enrollmentParameters: ", hexOf(parameters.enrollmentParameters));
}

CryptProvider newContainer(const ProviderRecord& record, const RequestParameters& parameters) {
    return detail::acquireProvider(record, &parameters.containerName,
                                   CRYPT_NEWKEYSET | (parameters.silent ? CRYPT_SILENT : 0));
}

Bytes signRequest(HCRYPTPROV provider, DWORD keySpec, CERT_REQUEST_INFO& info) {
    CRYPT_ALGORITHM_IDENTIFIER algorithm{gostSignature, {}};
    return twoPass<BYTE>(E_CRYPTO_SIGN_CERTIFICATE, L"CryptSignAndEncodeCertificate",
                         [&](BYTE* buffer, DWORD* size) {
                             return ::CryptSignAndEncodeCertificate(provider, keySpec, messageEncoding,
                                                                    X509_CERT_REQUEST_TO_BE_SIGNED, &info,
                                                                    &algorithm, nullptr, buffer, size);
                         });
}

// The key stays in the container.
Bytes createCertificateRequest(HCRYPTPROV provider, const RequestParameters& parameters) {
    CryptKey key;
    checkCrypto(
        ::CryptGenKey(provider, parameters.keySpec, parameters.exportable ? CRYPT_EXPORTABLE : 0, key.put()),
        E_CRYPTO_GEN_KEY, L"CryptGenKey");
    const Bytes publicKey = detail::exportPublicKeyInfo(provider, parameters.keySpec, messageEncoding);

    CRYPT_ATTR_BLOB extensions = blobOf(*parameters.extensions);
    CRYPT_ATTRIBUTE attributes[2] = {{extensionRequest, 1, &extensions}};
    DWORD attributeCount = 1;
    Bytes decoded;
    if (parameters.enrollmentParameters) {
        decoded = detail::cryptDecodeObject(PKCS_ATTRIBUTE, blobOf(*parameters.enrollmentParameters));
        attributes[attributeCount++] = *reinterpret_cast<const CRYPT_ATTRIBUTE*>(decoded.data());
    }
    CERT_REQUEST_INFO info{CERT_REQUEST_V1, blobOf(*parameters.distinguishedName),
                           *reinterpret_cast<const CERT_PUBLIC_KEY_INFO*>(publicKey.data()), attributeCount,
                           attributes};
    Bytes request = signRequest(provider, parameters.keySpec, info);
    if (isLogEnabled(LogLevel::debug))
        writeLog(LogLevel::debug, L"createCertificateRequest", binToHex(request));
    return request;
}

// "\\.\REGISTRY\..." and the like, however it is written.
bool isInRegistry(std::wstring path) {
    ::CharLowerBuffW(path.data(), static_cast<DWORD>(path.size()));
    return path.find(L"registry\\") != std::wstring::npos;
}

}  // namespace

Bytes createCertificationRequest(const ProviderRecord& record, const RequestParameters& parameters) {
    logParameters(L"Corvane::CryptoApiProvider::createCertificationRequest", record, parameters, false);
    const CryptProvider provider = newContainer(record, parameters);
    return createCertificateRequest(provider.get(), parameters);
}

std::wstring createCertificationRequestEx(const ProviderRecord& record, const RequestParameters& parameters,
                                          const TokenOfContainer& tokenOf) {
    logParameters(L"Corvane::CryptoApiProvider::createCertificationRequestEx", record, parameters, true);
    const CryptProvider provider = newContainer(record, parameters);
    const std::wstring path = detail::uniqueContainerName(provider.get());
    const Bytes request = createCertificateRequest(provider.get(), parameters);
    Json::Value json(Json::objectValue);
    json["path"] = toUtf8(path);
    if (!isInRegistry(path)) {
        if (Json::Value token = tokenOf(path); !token.isNull())
            json["token"] = std::move(token);
    }
    json["request"] = toUtf8(binToBase64(request, base64NoLineBreaks));
    return writeJson(json);
}

}  // namespace Corvane
