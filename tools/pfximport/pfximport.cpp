// Puts keys and certificates into the current user's system stores, so that tests and the demonstration have
// something to sign with. On Windows people use certutil or the import wizard, and PFXImportCertStore does
// all of it; under Wine that puts the key into a provider that has no SHA-256 and ties it to every
// certificate of the file.
#include "binary/hex.h"
#include "core/check.h"
#include "core/two_pass.h"
#include "core/wide_text.h"
#include "crypto/api/encoding.h"
#include "crypto/certificate/certificate.h"
#include "files/file.h"

#include <cstdio>

namespace {

using namespace Corvane;

constexpr char help[] = R"(usage: pfximport [--password TEXT] FILE...
Imports for the current user: of *.pfx the certificate with a key into "My", its RSA key into a container of its own;
of PEM files those that are their own issuer into "Root", the others into "CA". Prints a line for each.
)";

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
        return Certificate(CertificateContext(
            must(::CertCreateCertificateContext(messageEncoding, found.get()->pbCertEncoded,
                                                found.get()->cbCertEncoded),
                 L"CertCreateCertificateContext")));
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

// Puts the key into a container of "Microsoft Enhanced RSA and AES Cryptographic Provider" that is named
// after the certificate's thumbprint (one of that name is replaced), and returns the certificate tied to it.
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

void add(const wchar_t* storeName, const Certificate& certificate) {
    // The registry keeps what was added when the store is closed.
    const CertificateStoreHandle store(checkCrypto(
        ::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, storeName),
        E_CERT_STORE_OPEN, storeName));
    checkCrypto(::CertAddCertificateContextToStore(store.get(), certificate.context(),
                                                   CERT_STORE_ADD_REPLACE_EXISTING, nullptr),
                E_CERT_STORE_INSTALL, storeName);
    const std::wstring line = storeName + (L' ' + binToHex(certificate.getHash())) + L' ';
    std::puts(toUtf8(line + certificate.getName(false)).c_str());
}

void importAuthority(const Certificate& certificate) {
    CERT_INFO& info = *certificate.context()->pCertInfo;
    add(::CertCompareCertificateName(messageEncoding, &info.Subject, &info.Issuer) ? L"Root" : L"CA",
        certificate);
}

void importFile(const std::wstring& path, const std::wstring& password) {
    const Bytes content = readFile(path);
    if (path.ends_with(L".pfx"))
        return add(L"My", importPfx(content, password));
    constexpr std::string_view begin = "-----BEGIN CERTIFICATE-----";
    const std::string text(content.begin(), content.end());
    for (std::size_t from = text.find(begin), next = 0; from != std::string::npos; from = next) {
        next = text.find(begin, from + begin.size());
        const std::string pem = text.substr(from, next - from);
        importAuthority(Certificate::create(Bytes(pem.begin(), pem.end())));
    }
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    if (count < 2 || std::wstring_view(arguments[1]) == L"--help") {
        std::fputs(help, stdout);
        return count < 2 ? 2 : 0;
    }
    std::wstring password;
    int at = 1;
    try {
        for (; at < count; ++at) {
            if (std::wstring_view(arguments[at]) == L"--password" && at + 1 < count)
                password = arguments[++at];
            else
                importFile(arguments[at], password);
        }
    } catch (const Exception& exception) {
        std::fprintf(stderr, "pfximport: %s: %s\n", toUtf8(arguments[at]).c_str(),
                     toUtf8(fullMessage(exception)).c_str());
        return 1;
    }
    return 0;
}
