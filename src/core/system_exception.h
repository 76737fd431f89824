// Exceptions that carry a number from the system, and the system's text for it.
#pragma once

#include "core/exception.h"

#include <windows.h>

namespace Corvane {

// "0x" + lower-case hexadecimal.
std::wstring hexNumber(std::uint32_t number);

// hexNumber() + ":" + the system's text; empty when the system has no text for it, as for many numbers of
// vendors' providers.
std::wstring systemText(std::uint32_t number);

// The same for the log: the number alone when there is no text.
std::wstring numberForLog(std::uint32_t number);

// A Win32 call failed. The one-argument form takes the thread's last error, so it must be the
// first thing done after the failing call.
class Win32Exception : public CustomException {
public:
    explicit Win32Exception(const ErrorDescriptor& descriptor)
        : Win32Exception(descriptor, ::GetLastError()) {}
    Win32Exception(const ErrorDescriptor& descriptor, std::uint32_t error)
        : CustomException(descriptor), error_(error) {}

    std::wstring details() const override;

    std::uint32_t error() const noexcept { return error_; }

private:
    std::uint32_t error_;
};

// A CryptoAPI call failed.
class CryptoException : public Win32Exception {
public:
    using Win32Exception::Win32Exception;
};

// A common dialog failed; `error` is CommDlgExtendedError's number, which has no system text.
class CommDlgException : public CustomException {
public:
    CommDlgException(const ErrorDescriptor& descriptor, std::uint32_t error)
        : CustomException(descriptor), error_(error) {}

    std::wstring details() const override;

private:
    std::uint32_t error_;
};

}  // namespace Corvane

// A COM call failed; its HRESULT reaches the script unchanged.
class ComException : public Corvane::CustomException {
public:
    ComException(const Corvane::ErrorDescriptor& descriptor, HRESULT hr)
        : Corvane::CustomException(descriptor), hr_(hr) {}

    std::wstring details() const override;

    HRESULT hr() const noexcept { return hr_; }

private:
    HRESULT hr_;
};
