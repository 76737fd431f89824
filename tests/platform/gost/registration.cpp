// Registration for the bitness of the DLL: the providers, and by the system's own calls the identifiers and
// the functions that it asks by identifier. Also what Windows knows by itself and Wine does not.
#include "../own_module.h"
#include "algorithms.h"

#include <cstring>
#include <string>

namespace Corvane::Platform::Gost {
namespace {

void setValue(const std::wstring& key, const wchar_t* name, DWORD type, const void* data, std::size_t size) {
    const std::wstring path = L"Software\\Microsoft\\Cryptography\\Defaults\\" + key;
    if (const LSTATUS status =
            ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, path.c_str(), name, type, data, static_cast<DWORD>(size)))
        fail(status);
}

void setText(const std::wstring& key, const wchar_t* name, const std::wstring& text) {
    setValue(key, name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
}

void registerProvider(const Algorithm& algorithm, const std::wstring& path) {
    const std::wstring provider = L"Provider\\" + std::wstring(algorithm.provider);
    setText(provider, L"Image Path", path);
    setValue(provider, L"Type", REG_DWORD, &algorithm.providerType, sizeof(DWORD));
    setValue(provider, L"Signature", REG_BINARY, "", 1);
    setText(L"Provider Types\\Type 0" + std::to_wstring(algorithm.providerType), L"Name", algorithm.provider);
}

// `extra` is what the group says of ExtraInfo in the documentation of CRYPT_OID_INFO.
template <std::size_t Size = 0>
void registerIdentifier(DWORD group, const char* oid, const wchar_t* name, ALG_ID id,
                        const DWORD* extra = nullptr) {
    CRYPT_OID_INFO info{};
    std::wstring none;
    DWORD numbers[Size + 1] = {};
    std::copy_n(extra, Size, numbers);
    info.cbSize = sizeof info;
    info.pszOID = oid;
    info.pwszName = name;
    info.dwGroupId = group;
    info.Algid = id;
    info.ExtraInfo = {Size * sizeof(DWORD), reinterpret_cast<BYTE*>(numbers)};
    info.pwszCNGAlgid = none.data();
    info.pwszCNGExtraAlgid = none.data();
    if (!::CryptRegisterOIDInfo(&info, 0))
        fail(static_cast<LONG>(::GetLastError()));
}

void registerFunction(const char* kind, const char* oid, const std::wstring& path, const char* overrideName) {
    if (!::CryptRegisterOIDFunction(X509_ASN_ENCODING, kind, oid, path.c_str(), overrideName))
        fail(static_cast<LONG>(::GetLastError()));
}

void registerAlgorithm(const Algorithm& algorithm, const std::wstring& path) {
    registerProvider(algorithm, path);
    registerIdentifier(CRYPT_HASH_ALG_OID_GROUP_ID, algorithm.hashOid, algorithm.hashName, algorithm.hashId);
    registerIdentifier(CRYPT_PUBKEY_ALG_OID_GROUP_ID, algorithm.keyOid, algorithm.keyName, algorithm.keyId);
    // The key's algorithm, flags, and the type of the provider that hashes.
    const DWORD signature[] = {algorithm.keyId, 0, algorithm.providerType};
    registerIdentifier<std::size(signature)>(CRYPT_SIGN_ALG_OID_GROUP_ID, algorithm.signatureOid,
                                             algorithm.signatureName, algorithm.hashId, signature);
    registerFunction(CRYPT_OID_EXPORT_PUBLIC_KEY_INFO_FUNC, algorithm.keyOid, path,
                     "gostExportPublicKeyInfo");
    registerFunction(CRYPT_OID_IMPORT_PUBLIC_KEY_INFO_FUNC, algorithm.keyOid, path,
                     "gostImportPublicKeyInfo");
    registerFunction(CMSG_OID_EXPORT_KEY_TRANS_FUNC, algorithm.keyOid, path, "gostExportKeyTrans");
    registerFunction(CMSG_OID_IMPORT_KEY_TRANS_FUNC, algorithm.keyOid, path, "gostImportKeyTrans");
}

void registerAll() {
    const std::wstring path = ownPath();
    for (const Algorithm& algorithm : algorithms)
        registerAlgorithm(algorithm, path);
    registerIdentifier(CRYPT_ENCRYPT_ALG_OID_GROUP_ID, cipherOid, L"GOST 28147-89", cipherId);
    registerFunction(CMSG_OID_GEN_CONTENT_ENCRYPT_KEY_FUNC, cipherOid, path, "gostGenContentEncryptKey");

    registerFunction(CRYPT_OID_ENCODE_OBJECT_FUNC, "#4", path, "gostEncodeRequest");
    registerIdentifier(CRYPT_ENCRYPT_ALG_OID_GROUP_ID, "2.16.840.1.101.3.4.1.2", L"aes128", CALG_AES_128);
    registerIdentifier(CRYPT_ENCRYPT_ALG_OID_GROUP_ID, "2.16.840.1.101.3.4.1.22", L"aes192", CALG_AES_192);
    registerIdentifier(CRYPT_ENCRYPT_ALG_OID_GROUP_ID, "2.16.840.1.101.3.4.1.42", L"aes256", CALG_AES_256);
}

}  // namespace
}  // namespace Corvane::Platform::Gost

extern "C" HRESULT WINAPI DllRegisterServer() {
    using namespace Corvane::Platform::Gost;
    return entry(registerAll) ? S_OK : HRESULT_FROM_WIN32(::GetLastError());
}
