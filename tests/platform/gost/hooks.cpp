// What the system asks by object identifier: public keys of certificates, and what is signed of a request.
// And the registration for the bitness of the DLL: the providers, the identifiers and the functions, also of
// what Windows knows by itself and Wine does not.
#include "../own_module.h"
#include "core/handles.h"
#include "provider.h"

namespace Corvane::Platform::Gost {
namespace {

// A structure as the system writes it.
Bytes encoded(const char* type, const void* structure) {
    return filled([&](BYTE* buffer, DWORD* size) {
        return ::CryptEncodeObject(X509_ASN_ENCODING | PKCS_7_ASN_ENCODING, type, structure, buffer, size);
    });
}

Bytes requestInfo(const CERT_REQUEST_INFO& info) {
    const CRYPT_ATTRIBUTES all{info.cAttribute, info.rgAttribute};
    Bytes attributes = encoded(PKCS_ATTRIBUTES, &all);
    attributes.front() = Tag::context(0);
    return tlv(Tag::sequence, integer(0), viewOf(info.Subject),
               encoded(X509_PUBLIC_KEY_INFO, &info.SubjectPublicKeyInfo), attributes);
}

void setValue(const std::wstring& key, const wchar_t* name, DWORD type, const void* data, std::size_t size) {
    const std::wstring path = L"Software\\Microsoft\\Cryptography\\Defaults\\" + key;
    if (const LSTATUS status =
            ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, path.c_str(), name, type, data, static_cast<DWORD>(size)))
        fail(status);
}

void setText(const std::wstring& key, const wchar_t* name, const std::wstring& text) {
    setValue(key, name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

// `extra` is what the group says of ExtraInfo in the documentation of CRYPT_OID_INFO.
void registerIdentifier(DWORD group, const char* oid, ALG_ID id, std::vector<DWORD> extra = {}) {
    wchar_t none[] = L"";
    CRYPT_OID_INFO info{};
    info.cbSize = sizeof info;
    info.pszOID = oid;
    info.pwszName = L"of the tests";
    info.dwGroupId = group;
    info.Algid = id;
    info.ExtraInfo = {static_cast<DWORD>(extra.size() * sizeof(DWORD)),
                      reinterpret_cast<BYTE*>(extra.data())};
    info.pwszCNGAlgid = none;
    info.pwszCNGExtraAlgid = none;
    must(::CryptRegisterOIDInfo(&info, 0));
}

void registerFunction(const char* kind, const char* oid, const char* function) {
    must(::CryptRegisterOIDFunction(X509_ASN_ENCODING, kind, oid, ownPath().c_str(), function));
}

void registerAlgorithm(const Algorithm& algorithm) {
    const std::wstring provider = L"Provider\\" + std::wstring(algorithm.provider);
    setText(provider, L"Image Path", ownPath());
    setValue(provider, L"Type", REG_DWORD, &algorithm.providerType, sizeof(DWORD));
    setValue(provider, L"Signature", REG_BINARY, "", 1);
    setText(L"Provider Types\\Type 0" + std::to_wstring(algorithm.providerType), L"Name", algorithm.provider);
    registerIdentifier(CRYPT_HASH_ALG_OID_GROUP_ID, algorithm.hashOid, algorithm.hashId);
    // The key's algorithm, flags, and the type of the provider that hashes.
    registerIdentifier(CRYPT_SIGN_ALG_OID_GROUP_ID, algorithm.signatureOid, algorithm.hashId,
                       {algorithm.keyId, 0, algorithm.providerType});
    registerFunction(CRYPT_OID_EXPORT_PUBLIC_KEY_INFO_FUNC, algorithm.keyOid, "gostExportPublicKeyInfo");
    registerFunction(CRYPT_OID_IMPORT_PUBLIC_KEY_INFO_FUNC, algorithm.keyOid, "gostImportPublicKeyInfo");
}

void registerAll() {
    std::ranges::for_each(algorithms, registerAlgorithm);
    registerFunction(CRYPT_OID_ENCODE_OBJECT_FUNC, "#4", "gostEncodeRequest");
    registerIdentifier(CRYPT_ENCRYPT_ALG_OID_GROUP_ID, cipherOid, cipherId);
    registerIdentifier(CRYPT_ENCRYPT_ALG_OID_GROUP_ID, "2.16.840.1.101.3.4.1.42", CALG_AES_256);
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
        const Bytes der = encoded(X509_PUBLIC_KEY_INFO, info);
        const Bytes blob = keyBlob(PUBLICKEYBLOB, readPublicKeyInfo(der).algorithm->keyId, der);
        must(::CryptImportKey(context, blob.data(), lengthOf(blob), 0, 0, key));
    });
}

BOOL WINAPI gostEncodeRequest(DWORD, LPCSTR, const void* info, BYTE* encoded, DWORD* size) {
    return entry([&] { give(encoded, size, requestInfo(*static_cast<const CERT_REQUEST_INFO*>(info))); });
}

HRESULT WINAPI DllRegisterServer() {
    return entry(registerAll) ? S_OK : HRESULT_FROM_WIN32(::GetLastError());
}

}  // extern "C"
