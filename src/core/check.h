// One checker for each family of system calls: wraps the call where it stands, logs which call it
// was, and turns its failure into the exception that carries the system's number.
//
//     checkCrypto(::CertCloseStore(store, 0), E_CERT_STORE_CLOSE, L"CertCloseStore");
#pragma once

#include "core/checker.h"
#include "core/system_exception.h"

namespace Corvane {

// For a failure whose number is known otherwise: write the line in the log and throw. Any layer may.
[[noreturn]] void failWin32(const ErrorDescriptor& descriptor, const wchar_t* call, std::uint32_t error);
[[noreturn]] void failCrypto(const ErrorDescriptor& descriptor, const wchar_t* call, std::uint32_t error);
[[noreturn]] void failCom(const ErrorDescriptor& descriptor, const wchar_t* call, HRESULT hr);

// Win32 calls that report through the thread's last error.
struct Win32Calls {
    static bool succeeded(auto result) noexcept { return static_cast<bool>(result); }
    [[noreturn]] static void fail(auto, const ErrorDescriptor& descriptor, const wchar_t* call) {
        failWin32(descriptor, call, ::GetLastError());
    }
};

// Win32 calls that return their error number (the registry's).
struct StatusCalls {
    static bool succeeded(LSTATUS status) noexcept { return status == ERROR_SUCCESS; }
    [[noreturn]] static void fail(LSTATUS status, const ErrorDescriptor& descriptor, const wchar_t* call) {
        failWin32(descriptor, call, static_cast<std::uint32_t>(status));
    }
};

// CryptoAPI calls.
struct CryptoCalls : Win32Calls {
    [[noreturn]] static void fail(auto, const ErrorDescriptor& descriptor, const wchar_t* call) {
        failCrypto(descriptor, call, ::GetLastError());
    }
};

// COM calls.
struct ComCalls {
    static bool succeeded(HRESULT hr) noexcept { return SUCCEEDED(hr); }
    [[noreturn]] static void fail(HRESULT hr, const ErrorDescriptor& descriptor, const wchar_t* call) {
        failCom(descriptor, call, hr);
    }
};

template <class Result>
Result checkWin32(Result result, const ErrorDescriptor& descriptor, const wchar_t* call) {
    return check<Win32Calls>(result, descriptor, call);
}

inline void checkStatus(LSTATUS status, const ErrorDescriptor& descriptor, const wchar_t* call) {
    check<StatusCalls>(status, descriptor, call);
}

template <class Result>
Result checkCrypto(Result result, const ErrorDescriptor& descriptor, const wchar_t* call) {
    return check<CryptoCalls>(result, descriptor, call);
}

inline void checkHresult(HRESULT hr, const ErrorDescriptor& descriptor, const wchar_t* call) {
    check<ComCalls>(hr, descriptor, call);
}

}  // namespace Corvane
