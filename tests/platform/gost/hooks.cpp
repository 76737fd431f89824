// What the system asks by object identifier: public keys of certificates, and what is signed of a request.
#include "core/handles.h"
#include "objects.h"

#include <span>

namespace Corvane::Platform::Gost {
namespace {

Bytes keyInfoOf(const CERT_PUBLIC_KEY_INFO& info) {
    const auto& [algorithm, key] = info;
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

// RFC 2986, 4.1
Bytes requestInfo(const CERT_REQUEST_INFO& info) {
    Bytes attributes;
    for (const CRYPT_ATTRIBUTE& one : std::span(info.rgAttribute, info.cAttribute)) {
        Bytes values;
        for (const CRYPT_ATTR_BLOB& value : std::span(one.rgValue, one.cValue))
            append(values, value.cbData ? viewOf(value) : (fail(CRYPT_E_BAD_ENCODE), View()));
        append(attributes, tlv(Tag::sequence, oid(one.pszObjId), tlv(Tag::set, values)));
    }
    return tlv(Tag::sequence, integer(static_cast<std::uint8_t>(info.dwVersion)), viewOf(info.Subject),
               keyInfoOf(info.SubjectPublicKeyInfo), tlv(Tag::within(0), attributes));
}

}  // namespace
}  // namespace Corvane::Platform::Gost

using namespace Corvane::Platform;
using namespace Corvane::Platform::Gost;

extern "C" {

BOOL WINAPI gostExportPublicKeyInfo(HCRYPTPROV context, DWORD spec, DWORD, LPSTR, DWORD, void*,
                                    CERT_PUBLIC_KEY_INFO* info, DWORD* size) {
    return entry([&] {
        Corvane::CryptKey key;
        must(::CryptGetUserKey(context, spec, key.put()));
        const Bytes blob = filled([&](BYTE* buffer, DWORD* room) {
            return ::CryptExportKey(key.get(), 0, PUBLICKEYBLOB, 0, buffer, room);
        });
        const View der = View(blob).subspan(sizeof(BLOBHEADER));
        must(::CryptDecodeObject(X509_ASN_ENCODING, X509_PUBLIC_KEY_INFO, der.data(), lengthOf(der), 0, info,
                                 size));
    });
}

BOOL WINAPI gostImportPublicKeyInfo(HCRYPTPROV context, DWORD, CERT_PUBLIC_KEY_INFO* info, ALG_ID, DWORD,
                                    void*, HCRYPTKEY* key) {
    return entry([&] {
        const Bytes der = keyInfoOf(*info);
        const Algorithm& algorithm = *readPublicKeyInfo(der).algorithm;
        const Bytes blob = keyBlob(PUBLICKEYBLOB, algorithm.keyId, der);
        must(::CryptImportKey(contextFor(algorithm, context), blob.data(), lengthOf(blob), 0, 0, key));
    });
}

BOOL WINAPI gostEncodeRequest(DWORD, LPCSTR, const void* info, BYTE* encoded, DWORD* size) {
    return entry([&] { give(encoded, size, requestInfo(*static_cast<const CERT_REQUEST_INFO*>(info))); });
}

}  // extern "C"
