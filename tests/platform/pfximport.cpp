// Puts keys and certificates into the current user's system stores, so that tests and the demonstration have
// something to sign with. On Windows people use certutil or the import wizard.
#include "binary/hex.h"
#include "core/check.h"
#include "core/text.h"
#include "crypto/encoding.h"
#include "platform/pfx_import.h"
#include "stream/file.h"

#include <cstdio>

namespace {

using namespace Corvane;

constexpr char help[] = R"(usage: pfximport [--password TEXT] FILE...
Imports for the current user: of *.pfx the certificate with a key into "My", its RSA key into a container of its own;
of PEM files those that are their own issuer into "Root", the others into "CA". Prints a line for each.
)";

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
        return add(L"My", Test::importPfx(content, password));
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
