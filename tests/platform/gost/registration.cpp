// Registration for the bitness of the DLL: the providers, and by the system's own calls the identifiers and
// the functions that it asks by identifier. Also what Windows knows by itself and Wine does not.
#include "../own_module.h"
#include "algorithms.h"

#include <algorithm>
#include <string>
#include <vector>

namespace Corvane::Platform::Gost {
namespace {

void setValue(const std::wstring& key, const wchar_t* name, DWORD type, View data) {
    const std::wstring path = L"Software\\Microsoft\\Cryptography\\Defaults\\" + key;
    if (const LSTATUS status =
            ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, path.c_str(), name, type, data.data(), lengthOf(data)))
        fail(status);
}

void setText(const std::wstring& key, const wchar_t* name, const std::wstring& text) {
    setValue(key, name, REG_SZ,
             {reinterpret_cast<const std::uint8_t*>(text.c_str()), (text.size() + 1) * sizeof(wchar_t)});
}

// `extra` is what the group says of ExtraInfo in the documentation of CRYPT_OID_INFO.
void registerIdentifier(DWORD group, const char* oid, const wchar_t* name, ALG_ID id,
                        std::vector<DWORD> extra = {}) {
    wchar_t none[] = L"";
    CRYPT_OID_INFO info{};
    info.cbSize = sizeof info;
    info.pszOID = oid;
    info.pwszName = name;
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
    setValue(provider, L"Type", REG_DWORD, viewOfStructure(algorithm.providerType));
    setValue(provider, L"Signature", REG_BINARY, Bytes(1));
    setText(L"Provider Types\\Type 0" + std::to_wstring(algorithm.providerType), L"Name", algorithm.provider);
    registerIdentifier(CRYPT_HASH_ALG_OID_GROUP_ID, algorithm.hashOid, algorithm.hashName, algorithm.hashId);
    registerIdentifier(CRYPT_PUBKEY_ALG_OID_GROUP_ID, algorithm.keyOid, algorithm.keyName, algorithm.keyId);
    // The key's algorithm, flags, and the type of the provider that hashes.
    registerIdentifier(CRYPT_SIGN_ALG_OID_GROUP_ID, algorithm.signatureOid, algorithm.signatureName,
                       algorithm.hashId, {algorithm.keyId, 0, algorithm.providerType});
    registerFunction(CRYPT_OID_EXPORT_PUBLIC_KEY_INFO_FUNC, algorithm.keyOid, "gostExportPublicKeyInfo");
    registerFunction(CRYPT_OID_IMPORT_PUBLIC_KEY_INFO_FUNC, algorithm.keyOid, "gostImportPublicKeyInfo");
}

void registerAll() {
    std::ranges::for_each(algorithms, registerAlgorithm);
    registerFunction(CRYPT_OID_ENCODE_OBJECT_FUNC, "#4", "gostEncodeRequest");
    constexpr DWORD ciphers = CRYPT_ENCRYPT_ALG_OID_GROUP_ID;
    registerIdentifier(ciphers, cipherOid, L"GOST 28147-89", cipherId);
    registerIdentifier(ciphers, "2.16.840.1.101.3.4.1.2", L"aes128", CALG_AES_128);
    registerIdentifier(ciphers, "2.16.840.1.101.3.4.1.22", L"aes192", CALG_AES_192);
    registerIdentifier(ciphers, "2.16.840.1.101.3.4.1.42", L"aes256", CALG_AES_256);
}

}  // namespace
}  // namespace Corvane::Platform::Gost

extern "C" HRESULT WINAPI DllRegisterServer() {
    using namespace Corvane::Platform::Gost;
    return entry(registerAll) ? S_OK : HRESULT_FROM_WIN32(::GetLastError());
}
