// gostimport CERTIFICATE.pem KEY.pem [CERTIFICATE.pem KEY.pem]...
// Puts keys that OpenSSL's GOST engine made (PKCS #8, without a password) into containers of the current user
// that are named after the certificates' files, and the certificates into "My". The providers are to be
// registered before.
#include "algorithms.h"
#include "core/handles.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

using namespace Corvane::Platform;
using namespace Corvane::Platform::Gost;

Bytes readPem(const wchar_t* path) {
    std::ifstream file{std::filesystem::path(path)};
    const std::string text(std::istreambuf_iterator<char>(file), {});
    return filled([&](BYTE* buffer, DWORD* size) {
        return ::CryptStringToBinaryA(text.c_str(), static_cast<DWORD>(text.size()),
                                      CRYPT_STRING_BASE64HEADER, buffer, size, nullptr, nullptr);
    });
}

void importKey(const Algorithm& algorithm, const std::wstring& container, View key) {
    Corvane::CryptProvider context;
    Corvane::CryptKey imported;
    const auto acquire = [&](HCRYPTPROV* provider, DWORD flags) {
        return ::CryptAcquireContextW(provider, container.c_str(), algorithm.provider, algorithm.providerType,
                                      flags);
    };
    HCRYPTPROV none = 0;
    acquire(&none, CRYPT_DELETEKEYSET);
    must(acquire(context.put(), CRYPT_NEWKEYSET));
    const Bytes blob = keyBlob(PRIVATEKEYBLOB, algorithm.keyId, key);
    must(::CryptImportKey(context.get(), blob.data(), lengthOf(blob), 0, CRYPT_EXPORTABLE, imported.put()));
}

void importPair(const wchar_t* certificatePath, const wchar_t* keyPath) {
    const Bytes encoded = readPem(certificatePath);
    const Corvane::CertificateContext certificate(
        must(::CertCreateCertificateContext(X509_ASN_ENCODING, encoded.data(), lengthOf(encoded))));
    const Algorithm* algorithm =
        findAlgorithm(std::string_view(certificate.get()->pCertInfo->SubjectPublicKeyInfo.Algorithm.pszObjId),
                      &Algorithm::keyOid);
    std::wstring container = L"corvane-" + std::filesystem::path(certificatePath).stem().wstring();
    std::wstring provider = algorithm->provider;
    importKey(*algorithm, container, readPem(keyPath));
    CRYPT_KEY_PROV_INFO info{container.data(), provider.data(), algorithm->providerType, 0, 0,
                             nullptr,          AT_KEYEXCHANGE};
    must(::CertSetCertificateContextProperty(certificate.get(), CERT_KEY_PROV_INFO_PROP_ID, 0, &info));
    const Corvane::CertificateStoreHandle store(
        must(::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_CURRENT_USER, L"My")));
    must(::CertAddCertificateContextToStore(store.get(), certificate.get(), CERT_STORE_ADD_REPLACE_EXISTING,
                                            nullptr));
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    for (int at = 1; at + 1 < count; at += 2) {
        if (!entry([&] { importPair(arguments[at], arguments[at + 1]); })) {
            std::fprintf(stderr, "gostimport: %ls: error 0x%lX\n", arguments[at], ::GetLastError());
            return 1;
        }
    }
    return 0;
}
