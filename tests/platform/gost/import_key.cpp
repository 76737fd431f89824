// Puts keys that OpenSSL's GOST engine made, with their certificates, where the component finds them.
#include "algorithms.h"

#include <cstdio>

namespace {

using namespace Corvane::Platform;
using namespace Corvane::Platform::Gost;

constexpr char help[] = R"(usage: gostimport CERTIFICATE.pem KEY.pem [CERTIFICATE.pem KEY.pem]...
Puts each key (PKCS #8, without a password) into a container of the current user that is named after the certificate's
thumbprint, and the certificate into "My". The providers are to be registered before.
)";

Bytes readPem(const wchar_t* path) {
    std::FILE* const file = ::_wfopen(path, L"rb");
    must(file != nullptr);
    std::string text;
    for (int byte = std::fgetc(file); byte != EOF; byte = std::fgetc(file))
        text += static_cast<char>(byte);
    std::fclose(file);
    const std::string marker = "-----";
    const std::size_t begin = text.find(marker, text.find(marker) + 1) + marker.size();
    const std::size_t end = text.find(marker, begin);
    text = end == std::string::npos ? "" : text.substr(begin, end - begin);
    DWORD size = 0;
    const auto length = static_cast<DWORD>(text.size());
    must(::CryptStringToBinaryA(text.c_str(), length, CRYPT_STRING_BASE64, nullptr, &size, nullptr, nullptr));
    Bytes bytes(size);
    must(::CryptStringToBinaryA(text.c_str(), length, CRYPT_STRING_BASE64, bytes.data(), &size, nullptr,
                                nullptr));
    bytes.resize(size);
    return bytes;
}

std::wstring containerName(PCCERT_CONTEXT certificate) {
    BYTE thumbprint[20];
    DWORD size = sizeof thumbprint;
    must(::CertGetCertificateContextProperty(certificate, CERT_SHA1_HASH_PROP_ID, thumbprint, &size));
    std::wstring name = L"corvane-";
    for (const BYTE byte : thumbprint)
        for (const int digit : {byte >> 4, byte & 15})
            name += L"0123456789abcdef"[digit];
    return name;
}

void importKey(const Algorithm& algorithm, const std::wstring& container, View key) {
    HCRYPTPROV context = 0;
    ::CryptAcquireContextW(&context, container.c_str(), algorithm.provider, algorithm.providerType,
                           CRYPT_DELETEKEYSET);
    must(::CryptAcquireContextW(&context, container.c_str(), algorithm.provider, algorithm.providerType,
                                CRYPT_NEWKEYSET));
    const BLOBHEADER head{PRIVATEKEYBLOB, CUR_BLOB_VERSION, 0, algorithm.keyId};
    const auto* start = reinterpret_cast<const std::uint8_t*>(&head);
    Bytes blob(start, start + sizeof head);
    append(blob, key);
    HCRYPTKEY imported = 0;
    must(::CryptImportKey(context, blob.data(), static_cast<DWORD>(blob.size()), 0, CRYPT_EXPORTABLE,
                          &imported));
    ::CryptDestroyKey(imported);
    ::CryptReleaseContext(context, 0);
}

void importPair(const wchar_t* certificatePath, const wchar_t* keyPath) {
    const Bytes encoded = readPem(certificatePath);
    PCCERT_CONTEXT certificate =
        ::CertCreateCertificateContext(X509_ASN_ENCODING, encoded.data(), static_cast<DWORD>(encoded.size()));
    must(certificate != nullptr);
    const Algorithm* algorithm =
        findByKeyOid(certificate->pCertInfo->SubjectPublicKeyInfo.Algorithm.pszObjId);
    if (!algorithm)
        fail(NTE_BAD_ALGID);
    std::wstring container = containerName(certificate);
    std::wstring provider = algorithm->provider;
    importKey(*algorithm, container, readPem(keyPath));
    CRYPT_KEY_PROV_INFO info{container.data(), provider.data(), algorithm->providerType, 0, 0,
                             nullptr,          AT_KEYEXCHANGE};
    must(::CertSetCertificateContextProperty(certificate, CERT_KEY_PROV_INFO_PROP_ID, 0, &info));
    const HCERTSTORE store =
        ::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"My");
    must(store &&
         ::CertAddCertificateContextToStore(store, certificate, CERT_STORE_ADD_REPLACE_EXISTING, nullptr));
    must(::CertCloseStore(store, 0));
    ::CertFreeCertificateContext(certificate);
    std::printf("My %ls\n", container.c_str() + std::size(L"corvane-") - 1);
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    if (count < 3 || count % 2 == 0) {
        std::fputs(help, stdout);
        return 2;
    }
    for (int at = 1; at < count; at += 2) {
        if (!entry([&] { importPair(arguments[at], arguments[at + 1]); })) {
            std::fprintf(stderr, "gostimport: %ls: error 0x%lX\n", arguments[at], ::GetLastError());
            return 1;
        }
    }
    return 0;
}
