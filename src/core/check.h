// One checker for each family of system calls: wraps the call where it stands, logs which call it
// was, and turns its failure into the exception that carries the system's number.
//
//     checkCrypto(::CertCloseStore(store, 0), E_CERT_STORE_CLOSE, L"CertCloseStore");
#pragma once

#include "core/system_exception.h"

namespace Corvane {
namespace detail {

[[noreturn]] void failWin32(const ErrorDescriptor& descriptor, const wchar_t* call, std::uint32_t error);
[[noreturn]] void failCrypto(const ErrorDescriptor& descriptor, const wchar_t* call, std::uint32_t error);
[[noreturn]] void failCom(const ErrorDescriptor& descriptor, const wchar_t* call, HRESULT hr);

}  // namespace detail

// Win32 calls that report through the thread's last error.
template <class Result>
Result checkWin32(Result result, const ErrorDescriptor& descriptor, const wchar_t* call) {
    if (!result)
        detail::failWin32(descriptor, call, ::GetLastError());
    return result;
}

// Win32 calls that return their error number (the registry's).
inline void checkStatus(LSTATUS status, const ErrorDescriptor& descriptor, const wchar_t* call) {
    if (status != ERROR_SUCCESS)
        detail::failWin32(descriptor, call, static_cast<std::uint32_t>(status));
}

// CryptoAPI calls.
template <class Result>
Result checkCrypto(Result result, const ErrorDescriptor& descriptor, const wchar_t* call) {
    if (!result)
        detail::failCrypto(descriptor, call, ::GetLastError());
    return result;
}

// COM calls.
inline void checkHresult(HRESULT hr, const ErrorDescriptor& descriptor, const wchar_t* call) {
    if (FAILED(hr))
        detail::failCom(descriptor, call, hr);
}

}  // namespace Corvane
