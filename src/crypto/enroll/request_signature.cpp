#include "crypto/enroll/request_signature.h"

#include "core/check.h"
#include "core/handles.h"
#include "core/json.h"
#include "core/wide_text.h"
#include "crypto/api/message_size.h"
#include "crypto/provider/provider_record.h"
#include "crypto/request/request_json.h"

#include <json/value.h>

namespace Corvane::Crypto {
namespace {

CRYPT_DATA_BLOB blobOf(Bytes& bytes) {
    return {detail::messageSize(bytes), bytes.data()};
}

// A provider for keys of the algorithm; none where none is installed, and then the system looks for one.
CryptProvider providerFor(std::string_view keyAlgorithm) {
    const std::vector<ProviderRecord> records = providerRecords();
    const ProviderRecord* record =
        findProviderRecord(records, std::wstring(keyAlgorithm.begin(), keyAlgorithm.end()));
    CryptProvider provider;
    if (record)
        ::CryptAcquireContextW(provider.put(), nullptr, record->name.c_str(), record->type,
                               CRYPT_VERIFYCONTEXT | CRYPT_SILENT);
    return provider;
}

// The system's number where the signature is not good.
DWORD verifySignature(Bytes encoded, const asn1::SubjectPublicKeyInfo& key) {
    std::string algorithm = key.algorithm.oid;
    Bytes parameters = key.algorithm.parameters;
    Bytes bits = key.key;
    CERT_PUBLIC_KEY_INFO info{{algorithm.data(), blobOf(parameters)},
                              {detail::messageSize(bits), bits.data(), 0}};
    CRYPT_DATA_BLOB request = blobOf(encoded);
    const CryptProvider provider = providerFor(algorithm);
    const BOOL valid = ::CryptVerifyCertificateSignatureEx(
        provider.get(), X509_ASN_ENCODING, CRYPT_VERIFY_CERT_SIGN_SUBJECT_BLOB, &request,
        CRYPT_VERIFY_CERT_SIGN_ISSUER_PUBKEY, &info, 0, nullptr);
    const DWORD error = ::GetLastError();
    return valid ? ERROR_SUCCESS : error;
}

}  // namespace

std::wstring getCertificationRequestJson(const Bytes& request) {
    const asn1::CertificationRequest decoded = decodeCertificationRequest(request);
    Json::Value json = describeRequest(decoded);
    const DWORD error = verifySignature(request, decoded.info.publicKey);
    json["signatureValid"] = error == ERROR_SUCCESS;
    if (error != ERROR_SUCCESS && error != static_cast<DWORD>(NTE_BAD_SIGNATURE))
        json["signatureError"] = toUtf8(numberForLog(error));
    return writeJson(json);
}

}  // namespace Corvane::Crypto
