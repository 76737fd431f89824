#include "platform/pfx_import.h"

#include "core/check.h"
#include "core/two_pass.h"

#include <iterator>
#include <vector>

namespace Corvane::Test {
namespace {

using Blob = std::vector<BYTE>;

constexpr DWORD encoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;
constexpr wchar_t rsaProvider[] = L"Microsoft Enhanced RSA and AES Cryptographic Provider";

// A provider open on the private key that came with a certificate.
struct OpenKey {
    CryptProvider owner;
    HCRYPTPROV provider = 0;
    CryptKey key;
    DWORD specification = AT_KEYEXCHANGE;
};

OpenKey openKey(PCCERT_CONTEXT certificate) {
    OpenKey open;
    DWORD specification = 0;
    BOOL mustRelease = FALSE;
    checkCrypto(::CryptAcquireCertificatePrivateKey(certificate, 0, nullptr, &open.provider, &specification,
                                                    &mustRelease),
                E_GET_PRIVATE_KEY, L"CryptAcquireCertificatePrivateKey");
    if (mustRelease)
        open.owner.attach(open.provider);
    // Wine answers with both specifications at once, which opens nothing.
    if (!::CryptGetUserKey(open.provider, open.specification, open.key.put())) {
        open.specification = AT_SIGNATURE;
        checkCrypto(::CryptGetUserKey(open.provider, open.specification, open.key.put()),
                    E_CRYPTO_GET_USER_KEY, L"CryptGetUserKey");
    }
    return open;
}

// Whether the key that is tied to the certificate is really its own: Wine ties the key of a PFX to all of the
// certificates in it.
bool ownsKey(PCCERT_CONTEXT certificate) {
    DWORD size = 0;
    if (!::CertGetCertificateContextProperty(certificate, CERT_KEY_PROV_INFO_PROP_ID, nullptr, &size))
        return false;
    const OpenKey open = openKey(certificate);
    auto publicKey = twoPass<BYTE>(
        E_CRYPTO_EXPORT_PUBLIC_KEY_INFO, L"CryptExportPublicKeyInfo", [&](BYTE* buffer, DWORD* room) {
            return ::CryptExportPublicKeyInfo(open.provider, open.specification, encoding,
                                              reinterpret_cast<CERT_PUBLIC_KEY_INFO*>(buffer), room);
        });
    return ::CertComparePublicKeyInfo(encoding, reinterpret_cast<CERT_PUBLIC_KEY_INFO*>(publicKey.data()),
                                      &certificate->pCertInfo->SubjectPublicKeyInfo) != FALSE;
}

// The private key that came with a certificate, as PRIVATEKEYBLOB.
Blob exportKey(PCCERT_CONTEXT certificate) {
    const OpenKey open = openKey(certificate);
    return twoPass<BYTE>(E_CRYPTO_EXPORT_KEY, L"CryptExportKey", [&](BYTE* buffer, DWORD* size) {
        return ::CryptExportKey(open.key.get(), 0, PRIVATEKEYBLOB, 0, buffer, size);
    });
}

// Puts the key into a new container and ties the certificate to it.
void installKey(PCCERT_CONTEXT certificate, const Blob& key) {
    std::wstring container = L"corvane-" + thumbprint(certificate);
    std::wstring providerName = rsaProvider;
    CryptProvider provider;
    ::CryptAcquireContextW(provider.put(), container.c_str(), rsaProvider, PROV_RSA_AES, CRYPT_DELETEKEYSET);
    // What is written on deletion is no handle.
    static_cast<void>(provider.detach());
    checkCrypto(
        ::CryptAcquireContextW(provider.put(), container.c_str(), rsaProvider, PROV_RSA_AES, CRYPT_NEWKEYSET),
        E_CRYPTO_PROVIDER, L"CryptAcquireContext");
    CryptKey imported;
    checkCrypto(::CryptImportKey(provider.get(), key.data(), static_cast<DWORD>(key.size()), 0,
                                 CRYPT_EXPORTABLE, imported.put()),
                E_CRYPTO_IMPORT_KEY, L"CryptImportKey");

    const auto* header = reinterpret_cast<const PUBLICKEYSTRUC*>(key.data());
    CRYPT_KEY_PROV_INFO info{};
    info.pwszContainerName = container.data();
    info.pwszProvName = providerName.data();
    info.dwProvType = PROV_RSA_AES;
    info.dwKeySpec = header->aiKeyAlg == CALG_RSA_SIGN ? AT_SIGNATURE : AT_KEYEXCHANGE;
    checkCrypto(::CertSetCertificateContextProperty(certificate, CERT_KEY_PROV_INFO_PROP_ID, 0, &info),
                E_CRYPTO_BIND_CERTIFICATE_PRIVATE_KEY, L"CertSetCertificateContextProperty");
}

}  // namespace

std::wstring thumbprint(PCCERT_CONTEXT certificate) {
    const Blob hash =
        twoPass<BYTE>(E_CERT_HASH, L"CertGetCertificateContextProperty", [&](BYTE* buffer, DWORD* size) {
            return ::CertGetCertificateContextProperty(certificate, CERT_HASH_PROP_ID, buffer, size);
        });
    std::wstring text;
    for (const BYTE byte : hash) {
        wchar_t digits[3];
        std::swprintf(digits, std::size(digits), L"%02X", byte);
        text += digits;
    }
    return text;
}

CertificateContext importPfx(std::span<const BYTE> pfx, const std::wstring& password) {
    Blob data(pfx.begin(), pfx.end());
    CRYPT_DATA_BLOB blob{static_cast<DWORD>(data.size()), data.data()};
    const CertificateStoreHandle store(
        checkCrypto(::PFXImportCertStore(&blob, password.c_str(), CRYPT_EXPORTABLE | CRYPT_USER_KEYSET),
                    E_CERT_STORE_OPEN, L"PFXImportCertStore"));
    CertificateContext certificate(::CertEnumCertificatesInStore(store.get(), nullptr));
    while (certificate && !ownsKey(certificate.get()))
        certificate.attach(::CertEnumCertificatesInStore(store.get(), certificate.detach()));
    if (!certificate)
        throw Exception(E_GET_PRIVATE_KEY);
    Blob key = exportKey(certificate.get());
    // A context of its own: the one of the import keeps its link to the provider of the import.
    CertificateContext fresh(
        checkCrypto(::CertCreateCertificateContext(encoding, certificate.get()->pbCertEncoded,
                                                   certificate.get()->cbCertEncoded),
                    E_CERT_INVALID, L"CertCreateCertificateContext"));
    installKey(fresh.get(), key);
    ::SecureZeroMemory(key.data(), key.size());
    return fresh;
}

}  // namespace Corvane::Test
