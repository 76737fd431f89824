// Puts keys and certificates into the current user's system stores, so that tests and the demonstration have
// something to sign with. On Windows people use certutil or the import wizard.
#include "core/check.h"
#include "core/handles.h"
#include "core/text.h"
#include "core/two_pass.h"
#include "platform/pfx_import.h"

#include <cstdio>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace Corvane;
using namespace Corvane::Test;
using Blob = std::vector<BYTE>;

constexpr DWORD encoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;

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
        add(L"My", importPfx(readFile(path.c_str()), password).get());
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
