#include "crypto/enroll/key_container.h"

#include "core/log.h"
#include "core/two_pass.h"
#include "core/wide_text.h"

namespace Corvane::detail {
namespace {

// Parameters that are text come with a terminator, one byte a character.
std::wstring textOf(const Bytes& parameter) {
    const std::string text(parameter.begin(), parameter.end());
    return multiToWide(CP_ACP, text.c_str());
}

}  // namespace

CryptProvider acquireProvider(const ProviderRecord& record, const std::wstring* container, DWORD flags) {
    // The system would open the container whose name ends before it.
    if (container && container->find(L'\0') != std::wstring::npos)
        failCrypto(E_CRYPTO_PROVIDER, L"CryptAcquireContext", ERROR_INVALID_NAME);
    CryptProvider provider;
    checkCrypto(::CryptAcquireContextW(provider.put(), container ? container->c_str() : nullptr,
                                       record.name.c_str(), record.type, flags),
                E_CRYPTO_PROVIDER, L"CryptAcquireContext");
    return provider;
}

Bytes exportPublicKeyInfo(HCRYPTPROV provider, DWORD keySpec, DWORD encoding) {
    return twoPass<BYTE>(
        E_CRYPTO_EXPORT_PUBLIC_KEY_INFO, L"CryptExportPublicKeyInfo", [&](BYTE* buffer, DWORD* size) {
            return ::CryptExportPublicKeyInfo(provider, keySpec, encoding,
                                              reinterpret_cast<CERT_PUBLIC_KEY_INFO*>(buffer), size);
        });
}

std::wstring uniqueContainerName(HCRYPTPROV provider) {
    return textOf(
        twoPass<BYTE>(E_CRYPTO_PROVIDER_PARAM, L"CryptGetProvParam", [&](BYTE* buffer, DWORD* size) {
            return ::CryptGetProvParam(provider, PP_UNIQUE_CONTAINER, buffer, size, 0);
        }));
}

std::vector<std::wstring> containerNames(HCRYPTPROV provider, const wchar_t* call) {
    std::vector<std::wstring> names;
    // The size for the longest of the names. To ask it again for each of them would begin anew.
    DWORD longest = 0;
    BOOL more = ::CryptGetProvParam(provider, PP_ENUMCONTAINERS, nullptr, &longest, CRYPT_FIRST);
    for (DWORD flags = CRYPT_FIRST; more;) {
        Bytes name(longest + std::size_t{1});
        DWORD size = longest;
        more = ::CryptGetProvParam(provider, PP_ENUMCONTAINERS, name.data(), &size, flags);
        flags = 0;
        if (more) {
            names.push_back(textOf(name));
        } else if (::GetLastError() == ERROR_MORE_DATA && size > longest) {
            // Somebody made one with a longer name meanwhile.
            names.clear();
            longest = size;
            flags = CRYPT_FIRST;
            more = TRUE;
        }
    }
    const DWORD error = ::GetLastError();
    if (error != ERROR_NO_MORE_ITEMS)
        failCrypto(E_CRYPTO_PROVIDER_PARAM, call, error);
    return names;
}

void deleteContainer(const ProviderRecord& record, const std::wstring& container, DWORD flags) noexcept {
    HCRYPTPROV none = 0;
    if (!::CryptAcquireContextW(&none, container.c_str(), record.name.c_str(), record.type,
                                CRYPT_DELETEKEYSET | CRYPT_SILENT | flags))
        writeLog(LogLevel::warning, L"Corvane::detail::deleteContainer", L"not deleted: ", container);
}

}  // namespace Corvane::detail
