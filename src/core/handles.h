// All aliases of UniqueHandle, in one place.
#pragma once

#include "core/handle.h"

#include <windows.h>

#include <objbase.h>
#include <wincrypt.h>

namespace Corvane {
namespace detail {

template <class T>
struct NullTraits {
    using Type = T;
    static Type invalid() noexcept { return Type{}; }
};

struct FileTraits {
    using Type = HANDLE;
    static Type invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(Type file) noexcept { ::CloseHandle(file); }
};

struct ThreadTraits : NullTraits<HANDLE> {
    static void close(Type thread) noexcept { ::CloseHandle(thread); }
};

struct EventTraits : NullTraits<HANDLE> {
    static void close(Type event) noexcept { ::CloseHandle(event); }
};

struct ServiceTraits : NullTraits<SC_HANDLE> {
    static void close(Type service) noexcept { ::CloseServiceHandle(service); }
};

struct FileSearchTraits {
    using Type = HANDLE;
    static Type invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void close(Type search) noexcept { ::FindClose(search); }
};

struct RegistryKeyTraits : NullTraits<HKEY> {
    static void close(Type key) noexcept { ::RegCloseKey(key); }
};

struct CertificateStoreTraits : NullTraits<HCERTSTORE> {
    static void close(Type store) noexcept { ::CertCloseStore(store, 0); }
};

struct CertificateContextTraits : NullTraits<PCCERT_CONTEXT> {
    static void close(Type context) noexcept { ::CertFreeCertificateContext(context); }
};

struct CertificateChainTraits : NullTraits<PCCERT_CHAIN_CONTEXT> {
    static void close(Type chain) noexcept { ::CertFreeCertificateChain(chain); }
};

struct CryptProviderTraits : NullTraits<HCRYPTPROV> {
    static void close(Type provider) noexcept { ::CryptReleaseContext(provider, 0); }
};

struct CryptKeyTraits : NullTraits<HCRYPTKEY> {
    static void close(Type key) noexcept { ::CryptDestroyKey(key); }
};

struct CryptHashTraits : NullTraits<HCRYPTHASH> {
    static void close(Type hash) noexcept { ::CryptDestroyHash(hash); }
};

struct CryptMessageTraits : NullTraits<HCRYPTMSG> {
    static void close(Type message) noexcept { ::CryptMsgClose(message); }
};

template <class T>
struct LocalMemoryTraits : NullTraits<T*> {
    static void close(T* memory) noexcept { ::LocalFree(memory); }
};

template <class T>
struct CoTaskMemoryTraits : NullTraits<T*> {
    static void close(T* memory) noexcept { ::CoTaskMemFree(memory); }
};

}  // namespace detail

using ThreadHandle = UniqueHandle<detail::ThreadTraits>;
using EventHandle = UniqueHandle<detail::EventTraits>;
using ServiceHandle = UniqueHandle<detail::ServiceTraits>;
using FileHandle = UniqueHandle<detail::FileTraits>;
using FileSearch = UniqueHandle<detail::FileSearchTraits>;
using RegistryKey = UniqueHandle<detail::RegistryKeyTraits>;
using CertificateStoreHandle = UniqueHandle<detail::CertificateStoreTraits>;
using CertificateContext = UniqueHandle<detail::CertificateContextTraits>;
using CertificateChain = UniqueHandle<detail::CertificateChainTraits>;
using CryptProvider = UniqueHandle<detail::CryptProviderTraits>;
using CryptKey = UniqueHandle<detail::CryptKeyTraits>;
using CryptHash = UniqueHandle<detail::CryptHashTraits>;
using CryptMessageHandle = UniqueHandle<detail::CryptMessageTraits>;
template <class T>
using LocalMemory = UniqueHandle<detail::LocalMemoryTraits<T>>;
template <class T>
using CoTaskMemory = UniqueHandle<detail::CoTaskMemoryTraits<T>>;

}  // namespace Corvane
