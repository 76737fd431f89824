// What the system asks by object identifier: public keys of certificates, the keys of enveloped messages, and
// what is signed of a request.
#include "core/handles.h"
#include "key_pair.h"

#include <cstring>
#include <span>

namespace Corvane::Platform::Gost {
namespace {

Bytes keyInfoOf(const CRYPT_ALGORITHM_IDENTIFIER& algorithm, const CRYPT_BIT_BLOB& key) {
    return tlv(
        Tag::sequence, tlv(Tag::sequence, oid(algorithm.pszObjId), viewOf(algorithm.Parameters)),
        tlv(Tag::bitString, Bytes{static_cast<std::uint8_t>(key.cUnusedBits)}, View(key.pbData, key.cbData)));
}

// The context that was given where it is of the key's kind, else one for all that is public.
HCRYPTPROV contextFor(const Algorithm& algorithm, HCRYPTPROV given) {
    DWORD type = 0;
    DWORD size = sizeof type;
    if (given && ::CryptGetProvParam(given, PP_PROVTYPE, reinterpret_cast<BYTE*>(&type), &size, 0) &&
        type == algorithm.providerType)
        return given;
    static HCRYPTPROV shared[std::size(algorithms)];
    HCRYPTPROV& context = shared[&algorithm - algorithms];
    if (!context)
        must(::CryptAcquireContextW(&context, nullptr, algorithm.provider, algorithm.providerType,
                                    CRYPT_VERIFYCONTEXT));
    return context;
}

CryptKey importBlob(HCRYPTPROV context, BYTE type, ALG_ID id, View der, HCRYPTKEY with) {
    const BLOBHEADER head{type, CUR_BLOB_VERSION, 0, id};
    Bytes blob(sizeof head);
    std::memcpy(blob.data(), &head, sizeof head);
    append(blob, der);
    CryptKey key;
    must(::CryptImportKey(context, blob.data(), static_cast<DWORD>(blob.size()), with, 0, key.put()));
    return key;
}

CryptKey importPublic(HCRYPTPROV given, View keyInfo) {
    const Algorithm& algorithm = *readPublicKeyInfo(keyInfo).algorithm;
    return importBlob(contextFor(algorithm, given), PUBLICKEYBLOB, algorithm.keyId, keyInfo, 0);
}

// What follows the header of the key's blob.
Bytes exportBlob(HCRYPTKEY key, HCRYPTKEY with, DWORD type) {
    DWORD size = 0;
    must(::CryptExportKey(key, with, type, 0, nullptr, &size));
    Bytes blob(size);
    must(::CryptExportKey(key, with, type, 0, blob.data(), &size));
    return {blob.begin() + sizeof(BLOBHEADER), blob.begin() + static_cast<std::ptrdiff_t>(size)};
}

// Lays the public key out behind the structure, as the system's own functions do.
void giveKeyInfo(View der, CERT_PUBLIC_KEY_INFO* info, DWORD* size) {
    DWORD decoded = 0;
    must(::CryptDecodeObject(X509_ASN_ENCODING, X509_PUBLIC_KEY_INFO, der.data(),
                             static_cast<DWORD>(der.size()), 0, nullptr, &decoded));
    const DWORD room = *size;
    *size = decoded;
    if (!info)
        return;
    if (room < decoded)
        fail(ERROR_MORE_DATA);
    must(::CryptDecodeObject(X509_ASN_ENCODING, X509_PUBLIC_KEY_INFO, der.data(),
                             static_cast<DWORD>(der.size()), 0, info, size));
}

CRYPT_DATA_BLOB allocated(View bytes, PFN_CMSG_ALLOC allocate) {
    auto* const copy = static_cast<BYTE*>(allocate(bytes.size()));
    if (!copy)
        fail(E_OUTOFMEMORY);
    std::memcpy(copy, bytes.data(), bytes.size());
    return {static_cast<DWORD>(bytes.size()), copy};
}

// Gost28147-89-Parameters (RFC 4357)
void makeContentKey(CMSG_CONTENT_ENCRYPT_INFO& info) {
    const Algorithm* algorithm = nullptr;
    DWORD type = 0;
    DWORD size = sizeof type;
    if (info.hCryptProv &&
        ::CryptGetProvParam(info.hCryptProv, PP_PROVTYPE, reinterpret_cast<BYTE*>(&type), &size, 0))
        algorithm = findByType(type);
    info.hCryptProv = contextFor(algorithm ? *algorithm : algorithms[0], info.hCryptProv);
    must(::CryptGenKey(info.hCryptProv, cipherId, CRYPT_EXPORTABLE, &info.hContentEncryptKey));
    BYTE iv[8];
    char substitution[64];
    size = sizeof iv;
    must(::CryptGetKeyParam(info.hContentEncryptKey, KP_IV, iv, &size, 0));
    size = sizeof substitution;
    must(::CryptGetKeyParam(info.hContentEncryptKey, substitutionParameter,
                            reinterpret_cast<BYTE*>(substitution), &size, 0));
    const Bytes parameters = tlv(Tag::sequence, tlv(Tag::octetString, iv), oid(substitution));
    info.ContentEncryptionAlgorithm.Parameters = allocated(parameters, info.pfnAlloc);
    info.dwFlags |= CMSG_CONTENT_ENCRYPT_FREE_PARA_FLAG;
}

void useContentParameters(HCRYPTKEY key, const CRYPT_ALGORITHM_IDENTIFIER& algorithm) {
    Reader parameters = Reader(viewOf(algorithm.Parameters)).enter(Tag::sequence);
    const Bytes iv = octets(parameters.next(Tag::octetString));
    const std::string substitution = oidText(parameters.next(Tag::oid).content);
    constexpr std::size_t ivSize = 8;
    if (iv.size() != ivSize)
        fail(NTE_BAD_DATA);
    must(::CryptSetKeyParam(key, substitutionParameter, reinterpret_cast<const BYTE*>(substitution.c_str()),
                            0));
    must(::CryptSetKeyParam(key, KP_IV, iv.data(), 0));
}

HCRYPTKEY importContentKey(const CRYPT_ALGORITHM_IDENTIFIER& content,
                           const CMSG_CTRL_KEY_TRANS_DECRYPT_PARA& how) {
    CryptKey own;
    must(::CryptGetUserKey(how.hCryptProv, how.dwKeySpec ? how.dwKeySpec : AT_KEYEXCHANGE, own.put()));
    CryptKey key =
        importBlob(how.hCryptProv, SIMPLEBLOB, cipherId, viewOf(how.pKeyTrans->EncryptedKey), own.get());
    useContentParameters(key.get(), content);
    return key.detach();
}

Bytes attribute(const CRYPT_ATTRIBUTE& attribute) {
    Bytes values;
    for (const CRYPT_ATTR_BLOB& value : std::span(attribute.rgValue, attribute.cValue)) {
        if (value.cbData == 0)
            fail(CRYPT_E_BAD_ENCODE);
        append(values, viewOf(value));
    }
    return tlv(Tag::sequence, oid(attribute.pszObjId), tlv(Tag::set, values));
}

// RFC 2986, 4.1
Bytes requestInfo(const CERT_REQUEST_INFO& info) {
    Bytes attributes;
    for (const CRYPT_ATTRIBUTE& one : std::span(info.rgAttribute, info.cAttribute))
        append(attributes, attribute(one));
    return tlv(Tag::sequence, integer(info.dwVersion), viewOf(info.Subject),
               keyInfoOf(info.SubjectPublicKeyInfo.Algorithm, info.SubjectPublicKeyInfo.PublicKey),
               tlv(Tag::within(0), attributes));
}

}  // namespace
}  // namespace Corvane::Platform::Gost

using namespace Corvane::Platform;
using namespace Corvane::Platform::Gost;
using Corvane::CryptKey;

extern "C" {

BOOL WINAPI gostExportPublicKeyInfo(HCRYPTPROV context, DWORD spec, DWORD, LPSTR, DWORD, void*,
                                    CERT_PUBLIC_KEY_INFO* info, DWORD* size) {
    return entry([&] {
        CryptKey key;
        must(::CryptGetUserKey(context, spec, key.put()));
        giveKeyInfo(exportBlob(key.get(), 0, PUBLICKEYBLOB), info, size);
    });
}

BOOL WINAPI gostImportPublicKeyInfo(HCRYPTPROV context, DWORD, CERT_PUBLIC_KEY_INFO* info, ALG_ID, DWORD,
                                    void*, HCRYPTKEY* key) {
    return entry([&] { *key = importPublic(context, keyInfoOf(info->Algorithm, info->PublicKey)).detach(); });
}

BOOL WINAPI gostGenContentEncryptKey(CMSG_CONTENT_ENCRYPT_INFO* info, DWORD, void*) {
    return entry([&] { makeContentKey(*info); });
}

BOOL WINAPI gostExportKeyTrans(CMSG_CONTENT_ENCRYPT_INFO* info,
                               CMSG_KEY_TRANS_RECIPIENT_ENCODE_INFO* recipient,
                               CMSG_KEY_TRANS_ENCRYPT_INFO* result, DWORD, void*) {
    return entry([&] {
        const CryptKey key = importPublic(
            info->hCryptProv, keyInfoOf(recipient->KeyEncryptionAlgorithm, recipient->RecipientPublicKey));
        result->EncryptedKey =
            allocated(exportBlob(info->hContentEncryptKey, key.get(), SIMPLEBLOB), info->pfnAlloc);
    });
}

BOOL WINAPI gostImportKeyTrans(CRYPT_ALGORITHM_IDENTIFIER* content, CMSG_CTRL_KEY_TRANS_DECRYPT_PARA* how,
                               DWORD, void*, HCRYPTKEY* key) {
    return entry([&] { *key = importContentKey(*content, *how); });
}

BOOL WINAPI gostEncodeRequest(DWORD, LPCSTR, const void* info, BYTE* encoded, DWORD* size) {
    return entry([&] { give(encoded, size, requestInfo(*static_cast<const CERT_REQUEST_INFO*>(info))); });
}

}  // extern "C"
