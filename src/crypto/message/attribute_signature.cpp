#include "crypto/message/attribute_signature.h"

#include "asn1/decoders/signed_data.h"
#include "core/handles.h"
#include "core/log.h"
#include "crypto/api/encoding.h"
#include "crypto/provider/provider_record.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace Corvane::detail {
namespace {

std::wstring widened(const char* text) {
    return text ? std::wstring(text, text + std::char_traits<char>::length(text)) : std::wstring();
}

// The number of a hash for CryptoAPI; 0 where it has none, and for no identifier at all.
ALG_ID hashNumber(char* oid) noexcept {
    const CRYPT_OID_INFO* info =
        oid ? ::CryptFindOIDInfo(CRYPT_OID_INFO_OID_KEY, oid, CRYPT_HASH_ALG_OID_GROUP_ID) : nullptr;
    return info && info->Algid < CALG_OID_INFO_PARAMETERS ? info->Algid : 0;
}

Answer verifyHash(HCRYPTPROV provider, ALG_ID algorithm, const Bytes& attributes, Bytes signature,
                  CERT_PUBLIC_KEY_INFO& publicKey) {
    CryptKey key;
    CryptHash hash;
    if (!::CryptImportPublicKeyInfo(provider, messageEncoding, &publicKey, key.put()) ||
        !::CryptCreateHash(provider, algorithm, 0, 0, hash.put()) ||
        !::CryptHashData(hash.get(), attributes.data(), static_cast<DWORD>(attributes.size()), 0))
        return Answer::unknown;
    // The message has it with the most significant byte first, the system wants the least significant one.
    std::ranges::reverse(signature);
    if (::CryptVerifySignatureW(hash.get(), signature.data(), static_cast<DWORD>(signature.size()), key.get(),
                                nullptr, 0))
        return Answer::yes;
    return ::GetLastError() == static_cast<DWORD>(NTE_BAD_SIGNATURE) ? Answer::no : Answer::unknown;
}

}  // namespace

Answer verifyAttributes(const CryptMessage& message, DWORD index, PCCERT_CONTEXT certificate) {
    const Bytes encoded = message.parameter(CMSG_ENCODED_SIGNER, index);
    Bytes attributes;
    try {
        attributes = asn1::signedAttributes(encoded);
    } catch (const asn1::Asn1Exception& exception) {
        writeLog(LogLevel::error, L"asn1::signedAttributes", exception.what());
    }
    if (attributes.empty())
        return Answer::unknown;
    const Bytes bytes = message.parameter(CMSG_SIGNER_INFO_PARAM, index);
    const auto& signer = *reinterpret_cast<const CMSG_SIGNER_INFO*>(bytes.data());
    // Providers know the older padding of RSA alone (RFC 8017 8), and would call a good signature a bad one.
    const char* const scheme = signer.HashEncryptionAlgorithm.pszObjId;
    if (scheme && std::string_view(scheme) == szOID_RSA_SSA_PSS)
        return Answer::unknown;
    CERT_PUBLIC_KEY_INFO& publicKey = certificate->pCertInfo->SubjectPublicKeyInfo;
    const std::vector<ProviderRecord> records = providerRecords();
    const ProviderRecord* record = findProviderRecord(records, widened(publicKey.Algorithm.pszObjId));
    const ALG_ID algorithm = hashNumber(signer.HashAlgorithm.pszObjId);
    CryptProvider provider;
    if (!record || algorithm == 0 ||
        !::CryptAcquireContextW(provider.put(), nullptr, record->name.c_str(), record->type,
                                CRYPT_VERIFYCONTEXT | CRYPT_SILENT))
        return Answer::unknown;
    const CRYPT_DATA_BLOB& value = signer.EncryptedHash;
    return verifyHash(provider.get(), algorithm, attributes, Bytes(value.pbData, value.pbData + value.cbData),
                      publicKey);
}

}  // namespace Corvane::detail
