#include "crypto/enroll/install_response.h"

#include "core/check.h"
#include "core/log.h"
#include "crypto/certificate/certificate_store.h"
#include "crypto/enroll/certificate_response.h"
#include "crypto/enroll/key_container.h"

#include <algorithm>

namespace Corvane {
namespace {

constexpr wchar_t context[] = L"Corvane::CryptoApiProvider::installCertificateResponse";
constexpr wchar_t contextEx[] = L"Corvane::CryptoApiProvider::installCertificateResponseEx";

bool hasExchangeKeyOf(HCRYPTPROV provider, const CERT_CONTEXT& certificate) {
    Bytes exported;
    try {
        exported = detail::exportPublicKeyInfo(provider, AT_KEYEXCHANGE, certificate.dwCertEncodingType);
    } catch (const CryptoException& exception) {
        // A container with a signature key alone is in order, but matches nothing.
        if (exception.error() != static_cast<DWORD>(NTE_NO_KEY))
            throw;
        return false;
    }
    auto* info = reinterpret_cast<CERT_PUBLIC_KEY_INFO*>(exported.data());
    return ::CertComparePublicKeyInfo(certificate.dwCertEncodingType, info,
                                      &certificate.pCertInfo->SubjectPublicKeyInfo) != FALSE;
}

bool isCertMatchToContainer(const ProviderRecord& record, const std::wstring& container,
                            const Certificate& certificate) {
    const CryptProvider provider = detail::acquireProvider(record, &container, 0);
    return hasExchangeKeyOf(provider.get(), *certificate.context());
}

// For a container among many: one that cannot be opened, such as on a card that was taken out, is none.
bool matches(const ProviderRecord& record, const std::wstring& container, const Certificate& certificate) {
    writeLog(LogLevel::debug, context, L"container name: ", container);
    try {
        return isCertMatchToContainer(record, container, certificate);
    } catch (const CryptoException& exception) {
        if (exception.code() != E_CRYPTO_PROVIDER.code)
            throw;
        return false;
    }
}

std::wstring findContainer(const ProviderRecord& record, const Certificate& certificate) {
    const CryptProvider provider =
        detail::acquireProvider(record, nullptr, CRYPT_VERIFYCONTEXT | CRYPT_SILENT);
    const std::vector<std::wstring> names = detail::containerNames(provider.get());
    const auto found = std::ranges::find_if(
        names, [&](const std::wstring& name) { return matches(record, name, certificate); });
    if (found == names.end())
        throw Exception(E_CRYPTO_BIND_CERTIFICATE_PRIVATE_KEY);
    return *found;
}

void bindToContainer(const ProviderRecord& record, std::wstring container, const Certificate& certificate) {
    std::wstring provider = record.name;
    const CRYPT_KEY_PROV_INFO info{container.data(), provider.data(), record.type, 0, 0,
                                   nullptr,          AT_KEYEXCHANGE};
    checkCrypto(
        ::CertSetCertificateContextProperty(certificate.context(), CERT_KEY_PROV_INFO_PROP_ID, 0, &info),
        E_CRYPTO_BIND_CERTIFICATE_PRIVATE_KEY, L"CertSetCertificateContextProperty");
}

SharedCertificate install(const std::wstring& storeName, const Certificate& certificate) {
    return CertificateStore::open(userStores, storeName, false, false)->install(certificate);
}

}  // namespace

SharedCertificate installCertificateResponse(const ProviderRecord& record, std::wstring_view response,
                                             const std::wstring& storeName) {
    writeLog(LogLevel::debug, context, L"[in] store name: ", storeName, L"provide name: ", record.name,
             L", provider type: ", record.type);
    const Certificate certificate = detail::queryCertificate(response);
    bindToContainer(record, findContainer(record, certificate), certificate);
    return install(storeName, certificate);
}

SharedCertificate installCertificateResponseEx(const ProviderRecord& record, std::wstring_view response,
                                               const std::wstring& containerPath,
                                               const std::wstring& storeName) {
    writeLog(LogLevel::debug, contextEx, L"[in] store name: ", storeName, L"provide name: ", record.name,
             L", provider type: ", record.type);
    const Certificate certificate = detail::queryCertificate(response);
    if (!isCertMatchToContainer(record, containerPath, certificate))
        throw Exception(E_CRYPTO_WRONG_CONTAINER);
    bindToContainer(record, containerPath, certificate);
    return install(storeName, certificate);
}

}  // namespace Corvane
