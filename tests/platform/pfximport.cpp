// Puts keys and certificates into the current user's system stores, so that tests and the demonstration have
// something to sign with. On Windows people use certutil or the import wizard; Wine's PFXImportCertStore
// puts the key into a provider that has no SHA-256.
#include "core/check.h"
#include "core/handles.h"
#include "core/text.h"
#include "core/two_pass.h"

#include <cstdio>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace Corvane;
using Blob = std::vector<BYTE>;

constexpr DWORD encoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;
constexpr wchar_t rsaProvider[] = L"Microsoft Enhanced RSA and AES Cryptographic Provider";

constexpr char help[] = R"(usage: pfximport [--password TEXT] FILE...

Imports into the stores of the current user:
  *.pfx, *.p12   the certificate that has a key into "My"; its RSA key into a container of
                 "Microsoft Enhanced RSA and AES Cryptographic Provider" named after the thumbprint
  other files    certificates in PEM (any number of them) or DER: those that are their own issuer
                 into "Root", the others into "CA"

An imported certificate takes the place of an equal one. One line is printed for each:
store, SHA-1 thumbprint, display name (UTF-8). --password counts for the PFX files after it.

    pfximport chain.pem --password secret signer.pfx

A process that has built a certificate chain before does not see a new root. Under Wine a path of the
host system may be given when the current folder is on the drive that shows it.
Ends with 0 when everything was imported, 1 after the first failure, 2 when called wrongly.
)";

Blob readFile(const wchar_t* path) {
    FileHandle file(::CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    checkWin32(static_cast<bool>(file), E_CREATE_FILE, path);
    Blob data(::GetFileSize(file.get(), nullptr));
    DWORD read = 0;
    checkWin32(::ReadFile(file.get(), data.data(), static_cast<DWORD>(data.size()), &read, nullptr),
               E_FILE_READ, path);
    data.resize(read);
    return data;
}

Blob property(PCCERT_CONTEXT certificate, DWORD id) {
    return twoPass<BYTE>(E_CERT_PROPERTY, L"CertGetCertificateContextProperty",
                         [&](BYTE* buffer, DWORD* size) {
                             return ::CertGetCertificateContextProperty(certificate, id, buffer, size);
                         });
}

std::wstring thumbprint(PCCERT_CONTEXT certificate) {
    std::wstring text;
    for (const BYTE byte : property(certificate, CERT_HASH_PROP_ID)) {
        wchar_t digits[3];
        std::swprintf(digits, std::size(digits), L"%02X", byte);
        text += digits;
    }
    return text;
}

void add(const wchar_t* storeName, PCCERT_CONTEXT certificate) {
    // The registry keeps what was added when the store is closed.
    const CertificateStoreHandle store(checkCrypto(
        ::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, storeName),
        E_CERT_STORE_OPEN, storeName));
    checkCrypto(::CertAddCertificateContextToStore(store.get(), certificate, CERT_STORE_ADD_REPLACE_EXISTING,
                                                   nullptr),
                E_CERT_STORE_INSTALL, storeName);

    wchar_t name[256];
    ::CertGetNameStringW(certificate, CERT_NAME_SIMPLE_DISPLAY_TYPE, 0, nullptr, name, std::size(name));
    std::printf("%s %s %s\n", toUtf8(storeName).c_str(), toUtf8(thumbprint(certificate)).c_str(),
                toUtf8(name).c_str());
}

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

void importPfx(Blob data, const std::wstring& password) {
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
    const CertificateContext fresh(::CertCreateCertificateContext(encoding, certificate.get()->pbCertEncoded,
                                                                  certificate.get()->cbCertEncoded));
    installKey(fresh.get(), key);
    ::SecureZeroMemory(key.data(), key.size());
    add(L"My", fresh.get());
}

void importCertificate(const BYTE* der, std::size_t size) {
    const CertificateContext certificate(
        checkCrypto(::CertCreateCertificateContext(encoding, der, static_cast<DWORD>(size)), E_CERT_INVALID,
                    L"CertCreateCertificateContext"));
    const CERT_INFO& info = *certificate.get()->pCertInfo;
    CERT_NAME_BLOB subject = info.Subject;
    CERT_NAME_BLOB issuer = info.Issuer;
    add(::CertCompareCertificateName(encoding, &subject, &issuer) ? L"Root" : L"CA", certificate.get());
}

// Either one DER certificate or any number of PEM ones with whatever stands between them.
void importCertificates(const Blob& data) {
    constexpr std::string_view begin = "-----BEGIN CERTIFICATE-----";
    constexpr std::string_view end = "-----END CERTIFICATE-----";
    const std::string text(data.begin(), data.end());
    std::size_t from = text.find(begin);
    if (from == std::string::npos)
        importCertificate(data.data(), data.size());
    while (from != std::string::npos) {
        const std::size_t next = text.find(begin, from + begin.size());
        const std::string pem = text.substr(from, text.find(end, from) - from) + std::string(end);
        const Blob der =
            twoPass<BYTE>(E_CRYPTO_PEM_TO_BYTES, L"CryptStringToBinaryA", [&](BYTE* buffer, DWORD* size) {
                return ::CryptStringToBinaryA(pem.data(), static_cast<DWORD>(pem.size()),
                                              CRYPT_STRING_BASE64HEADER, buffer, size, nullptr, nullptr);
            });
        importCertificate(der.data(), der.size());
        from = next;
    }
}

bool isPfx(const std::wstring& path) {
    return path.ends_with(L".pfx") || path.ends_with(L".p12");
}

void importFile(const std::wstring& path, const std::wstring& password) {
    if (isPfx(path))
        importPfx(readFile(path.c_str()), password);
    else
        importCertificates(readFile(path.c_str()));
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    const std::vector<std::wstring> given(arguments + 1, arguments + count);
    if (given.empty() || given[0] == L"--help") {
        std::fputs(help, stdout);
        return given.empty() ? 2 : 0;
    }
    std::wstring password;
    for (auto argument = given.begin(); argument != given.end(); ++argument) {
        if (argument->starts_with(L"-")) {
            if (*argument != L"--password" || argument + 1 == given.end()) {
                std::fputs(help, stderr);
                return 2;
            }
            password = *++argument;
            continue;
        }
        try {
            importFile(*argument, password);
        } catch (const Exception& exception) {
            std::fprintf(stderr, "pfximport: %s: %s\n", toUtf8(*argument).c_str(),
                         toUtf8(fullMessage(exception)).c_str());
            return 1;
        }
    }
    return 0;
}
