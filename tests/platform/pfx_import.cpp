#include "platform/pfx_import.h"

#include "binary/hex.h"
#include "core/check.h"
#include "core/two_pass.h"
#include "crypto/encoding.h"

namespace Corvane::Test {
namespace {

// One error for all that can fail here; the log tells which call it was.
template <class Result>
Result must(Result result, const wchar_t* call) {
    return checkCrypto(result, E_CRYPTO, call);
}

// A PFX in the system's hands: its certificates, and its key, which is tied to any of them.
struct OpenPfx {
    CertificateStoreHandle store;
    CryptProvider provider;

    OpenPfx(Bytes pfx, const std::wstring& password) {
        CRYPT_DATA_BLOB blob{static_cast<DWORD>(pfx.size()), pfx.data()};
        store.attach(must(::PFXImportCertStore(&blob, password.c_str(), CRYPT_EXPORTABLE | CRYPT_USER_KEYSET),
                          L"PFXImportCertStore"));
        const CertificateContext any(::CertEnumCertificatesInStore(store.get(), nullptr));
        DWORD specification = 0;
        BOOL mustRelease = FALSE;
        must(::CryptAcquireCertificatePrivateKey(any.get(), 0, nullptr, provider.put(), &specification,
                                                 &mustRelease),
             L"CryptAcquireCertificatePrivateKey");
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
            must(::CertFindCertificateInStore(store.get(), messageEncoding, 0, CERT_FIND_PUBLIC_KEY,
                                              key.data(), nullptr),
                 L"CertFindCertificateInStore"));
        return certificateOf({found.get()->pbCertEncoded, found.get()->cbCertEncoded});
    }

    // PRIVATEKEYBLOB
    Bytes privateKey() const {
        CryptKey key;
        must(::CryptGetUserKey(provider.get(), AT_KEYEXCHANGE, key.put()), L"CryptGetUserKey");
        return twoPass<BYTE>(E_CRYPTO_EXPORT_KEY, L"CryptExportKey", [&](BYTE* buffer, DWORD* size) {
            return ::CryptExportKey(key.get(), 0, PRIVATEKEYBLOB, 0, buffer, size);
        });
    }
};

}  // namespace

Certificate certificateOf(std::span<const BYTE> der) {
    return Certificate(CertificateContext(
        must(::CertCreateCertificateContext(messageEncoding, der.data(), static_cast<DWORD>(der.size())),
             L"CertCreateCertificateContext")));
}

Certificate importPfx(const Bytes& pfx, const std::wstring& password) {
    const OpenPfx open(pfx, password);
    Certificate certificate = open.certificate();

    std::wstring name = L"Microsoft Enhanced RSA and AES Cryptographic Provider";
    std::wstring container = L"corvane-" + binToHex(certificate.getHash());
    HCRYPTPROV deleted = 0;  // what is written on deletion is no handle
    ::CryptAcquireContextW(&deleted, container.c_str(), name.c_str(), PROV_RSA_AES, CRYPT_DELETEKEYSET);
    CryptProvider provider;
    must(::CryptAcquireContextW(provider.put(), container.c_str(), name.c_str(), PROV_RSA_AES,
                                CRYPT_NEWKEYSET),
         L"CryptAcquireContext");
    Bytes key = open.privateKey();
    CryptKey imported;
    must(::CryptImportKey(provider.get(), key.data(), static_cast<DWORD>(key.size()), 0, CRYPT_EXPORTABLE,
                          imported.put()),
         L"CryptImportKey");
    ::SecureZeroMemory(key.data(), key.size());

    CRYPT_KEY_PROV_INFO info{};
    info.pwszContainerName = container.data();
    info.pwszProvName = name.data();
    info.dwProvType = PROV_RSA_AES;
    info.dwKeySpec = AT_KEYEXCHANGE;
    must(::CertSetCertificateContextProperty(certificate.context(), CERT_KEY_PROV_INFO_PROP_ID, 0, &info),
         L"CertSetCertificateContextProperty");
    return certificate;
}

}  // namespace Corvane::Test
