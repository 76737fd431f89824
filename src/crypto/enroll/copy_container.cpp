#include "crypto/enroll/copy_container.h"

#include "core/check.h"
#include "core/log.h"
#include "core/secret.h"
#include "core/two_pass.h"
#include "core/wide_text.h"
#include "crypto/enroll/export_agreement.h"
#include "crypto/enroll/key_container.h"

#include <algorithm>

namespace Corvane {
namespace {

// Where the private key of a certificate is.
struct KeyPlace {
    std::wstring container;
    ProviderRecord provider;
    DWORD flags;
    DWORD keySpec;
};

std::wstring textOf(const wchar_t* text) {
    return text ? text : L"";
}

KeyPlace keyPlaceOf(const Certificate& certificate) {
    const Bytes property = certificate.getCertProperty(CERT_KEY_PROV_INFO_PROP_ID);
    const auto& info = *reinterpret_cast<const CRYPT_KEY_PROV_INFO*>(property.data());
    KeyPlace place{textOf(info.pwszContainerName), {}, info.dwFlags & CRYPT_MACHINE_KEYSET, info.dwKeySpec};
    place.provider.name = textOf(info.pwszProvName);
    place.provider.type = info.dwProvType;
    return place;
}

// By the name that the provider gives itself: a certificate may name none and mean the default one of its
// type.
ProviderRecord readProvider(HCRYPTPROV provider, DWORD type) {
    const Bytes name = twoPass<BYTE>(
        E_CRYPTO_PROVIDER_PARAM, L"GetProvParam",
        [&](BYTE* buffer, DWORD* size) { return ::CryptGetProvParam(provider, PP_NAME, buffer, size, 0); });
    ProviderRecord record;
    record.name = multiToWide(CP_ACP, std::string(name.begin(), name.end()).c_str());
    record.type = type;
    return record;
}

ALG_ID readAlgorithm(const CryptKey& key) {
    ALG_ID algorithm = 0;
    DWORD size = sizeof(algorithm);
    checkCrypto(::CryptGetKeyParam(key.get(), KP_ALGID, reinterpret_cast<BYTE*>(&algorithm), &size, 0),
                E_CRYPTO_KEY_PARAM, L"GetKeyParam");
    return algorithm;
}

SecretBytes exportKey(const CryptKey& key, HCRYPTKEY under) {
    DWORD size = 0;
    checkCrypto(::CryptExportKey(key.get(), under, PRIVATEKEYBLOB, 0, nullptr, &size), E_CRYPTO_EXPORT_KEY,
                L"ExportKey");
    SecretBytes blob(size);
    checkCrypto(::CryptExportKey(key.get(), under, PRIVATEKEYBLOB, 0, blob.data(), &size),
                E_CRYPTO_EXPORT_KEY, L"ExportKey");
    blob.resize(size);
    return blob;
}

void copyKey(HCRYPTPROV source, const CryptKey& key, HCRYPTPROV destination) {
    detail::Agreement agreement;
    if (const detail::ExportAlgorithms* algorithms = detail::findExportAlgorithms(readAlgorithm(key)))
        agreement = detail::agreeOnKey(source, destination, *algorithms);
    const SecretBytes blob = exportKey(key, agreement.source.get());
    CryptKey copy;
    checkCrypto(::CryptImportKey(destination, blob.data(), static_cast<DWORD>(blob.size()),
                                 agreement.destination.get(), CRYPT_EXPORTABLE, copy.put()),
                E_CRYPTO_IMPORT_KEY, L"CryptImportKey");
}

// A name that the provider tells of is taken; others, paths of readers among them, the system judges.
void expectNew(HCRYPTPROV provider, const std::wstring& container) {
    constexpr wchar_t context[] = L"GetCryptoContainersList";
    const std::vector<std::wstring> names = detail::containerNames(provider, context);
    if (std::ranges::find(names, container) != names.end())
        failCrypto(E_CRYPTO_PROVIDER, context, static_cast<DWORD>(NTE_EXISTS));
}

}  // namespace

void copyKeyContainer(const Certificate& certificate, const std::wstring& destination) {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::copyKeyContainer", L"[in] certificate: ",
             certificate, L" Destination: ", destination);
    const KeyPlace place = keyPlaceOf(certificate);
    const CryptProvider source = detail::acquireProvider(place.provider, &place.container, place.flags);
    CryptKey key;
    checkCrypto(::CryptGetUserKey(source.get(), place.keySpec, key.put()), E_CRYPTO_GET_USER_KEY,
                L"CryptGetUserKey");
    const ProviderRecord record = readProvider(source.get(), place.provider.type);
    expectNew(source.get(), destination);
    CryptProvider made = detail::acquireProvider(record, &destination, CRYPT_NEWKEYSET | place.flags);
    try {
        copyKey(source.get(), key, made.get());
    } catch (...) {
        made.reset();
        detail::deleteContainer(record, destination, place.flags);
        throw;
    }
}

}  // namespace Corvane
