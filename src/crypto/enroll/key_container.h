// Key containers of a provider, by CryptoAPI's calls. Any thread, but one at a time: CryptoAPI enumerates
// containers in the provider's handle.
#pragma once

#include "binary/bytes.h"
#include "core/handles.h"
#include "crypto/provider/provider_record.h"

#include <string>
#include <vector>

namespace Corvane::detail {

// The provider with a container of this name, or without one where the pointer is null. `flags` are those of
// CryptAcquireContext. Throws CryptoException E_CRYPTO_PROVIDER, also for a name with a NUL in it.
CryptProvider acquireProvider(const ProviderRecord& record, const std::wstring* container, DWORD flags);

// A CERT_PUBLIC_KEY_INFO, whose pointers point into the returned bytes. Throws CryptoException
// E_CRYPTO_EXPORT_PUBLIC_KEY_INFO.
Bytes exportPublicKeyInfo(HCRYPTPROV provider, DWORD keySpec, DWORD encoding);

// The name that tells the container from all others of all providers and media, PP_UNIQUE_CONTAINER. Throws
// CryptoException E_CRYPTO_PROVIDER_PARAM.
std::wstring uniqueContainerName(HCRYPTPROV provider);

// In the order in which the provider tells them. Throws CryptoException E_CRYPTO_PROVIDER_PARAM; `call` is
// what the log calls it.
std::vector<std::wstring> containerNames(HCRYPTPROV provider, const wchar_t* call = L"CryptGetProvParam");

// Takes a container away with its keys; `flags` are CRYPT_MACHINE_KEYSET or nothing. A failure is only
// logged.
void deleteContainer(const ProviderRecord& record, const std::wstring& container, DWORD flags) noexcept;

}  // namespace Corvane::detail
