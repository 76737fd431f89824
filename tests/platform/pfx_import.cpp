#include "platform/pfx_import.h"

#include "binary/hex.h"
#include "core/check.h"
#include "core/two_pass.h"
#include "crypto/encoding.h"

namespace Corvane::Test {
namespace {

// A PFX in the system's hands: its certificates, and its key, which is tied to any of them.
struct OpenPfx {
    CertificateStoreHandle store;
    CryptProvider provider;

    OpenPfx(Bytes pfx, const std::wstring& password) {
        CRYPT_DATA_BLOB blob{static_cast<DWORD>(pfx.size()), pfx.data()};
        store.attach(
            checkCrypto(::PFXImportCertStore(&blob, password.c_str(), CRYPT_EXPORTABLE | CRYPT_USER_KEYSET),
                        E_CERT_STORE_OPEN, L"PFXImportCertStore"));
        const CertificateContext any(::CertEnumCertificatesInStore(store.get(), nullptr));
        DWORD specification = 0;
        BOOL mustRelease = FALSE;
        checkCrypto(::CryptAcquireCertificatePrivateKey(any.get(), 0, nullptr, provider.put(), &specification,
                                                        &mustRelease),
                    E_GET_PRIVATE_KEY, L"CryptAcquireCertificatePrivateKey");
        if (!mustRelease)
            ::CryptContextAddRef(provider.get(), nullptr, 0);
    }

    // The certificate with the key's public half: of a context of its own, since the one of the import keeps
    // its link to the provider of the import.
    Certificate certificate() const {
        Bytes key = twoPass<BYTE>(
            E_CRYPTO_EXPORT_PUBLIC_KEY_INFO, L"CryptExportPublicKeyInfo", [&](BYTE* buffer, DWORD* size) {
                return ::CryptExportPublicKeyInfo(provider.get(), AT_KEYEXCHANGE, messageEncoding,
                                                  reinterpret_cast<CERT_PUBLIC_KEY_INFO*>(buffer), size);
            });
        const CertificateContext found(
            checkCrypto(::CertFindCertificateInStore(store.get(), messageEncoding, 0, CERT_FIND_PUBLIC_KEY,
                                                     key.data(), nullptr),
                        E_GET_PRIVATE_KEY, L"CertFindCertificateInStore"));
        return certificateOf({found.get()->pbCertEncoded, found.get()->cbCertEncoded});
    }

    // PRIVATEKEYBLOB
    Bytes privateKey() const {
        CryptKey key;
        checkCrypto(::CryptGetUserKey(provider.get(), AT_KEYEXCHANGE, key.put()), E_CRYPTO_GET_USER_KEY,
                    L"CryptGetUserKey");
        return twoPass<BYTE>(E_CRYPTO_EXPORT_KEY, L"CryptExportKey", [&](BYTE* buffer, DWORD* size) {
            return ::CryptExportKey(key.get(), 0, PRIVATEKEYBLOB, 0, buffer, size);
        });
    }
};

}  // namespace

Certificate certificateOf(std::span<const BYTE> der) {
    return Certificate(CertificateContext(checkCrypto(
        ::CertCreateCertificateContext(messageEncoding, der.data(), static_cast<DWORD>(der.size())),
        E_CERT_INVALID, L"CertCreateCertificateContext")));
}

Certificate importPfx(const Bytes& pfx, const std::wstring& password) {
    const OpenPfx open(pfx, password);
    const Certificate certificate = open.certificate();

    std::wstring name = L"Microsoft Enhanced RSA and AES Cryptographic Provider";
    std::wstring container = L"corvane-" + binToHex(certificate.getHash());
    HCRYPTPROV deleted = 0;  // what is written on deletion is no handle
    ::CryptAcquireContextW(&deleted, container.c_str(), name.c_str(), PROV_RSA_AES, CRYPT_DELETEKEYSET);
    CryptProvider provider;
    checkCrypto(::CryptAcquireContextW(provider.put(), container.c_str(), name.c_str(), PROV_RSA_AES,
                                       CRYPT_NEWKEYSET),
                E_CRYPTO_PROVIDER, L"CryptAcquireContext");
    Bytes key = open.privateKey();
    CryptKey imported;
    checkCrypto(::CryptImportKey(provider.get(), key.data(), static_cast<DWORD>(key.size()), 0,
                                 CRYPT_EXPORTABLE, imported.put()),
                E_CRYPTO_IMPORT_KEY, L"CryptImportKey");
    ::SecureZeroMemory(key.data(), key.size());

    CRYPT_KEY_PROV_INFO info{};
    info.pwszContainerName = container.data();
    info.pwszProvName = name.data();
    info.dwProvType = PROV_RSA_AES;
    info.dwKeySpec = AT_KEYEXCHANGE;
    checkCrypto(
        ::CertSetCertificateContextProperty(certificate.context(), CERT_KEY_PROV_INFO_PROP_ID, 0, &info),
        E_CRYPTO_BIND_CERTIFICATE_PRIVATE_KEY, L"CertSetCertificateContextProperty");
    return certificate;
}

}  // namespace Corvane::Test
