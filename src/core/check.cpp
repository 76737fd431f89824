#include "core/check.h"

#include "core/log.h"

namespace Corvane::detail {

void failWin32(const ErrorDescriptor& descriptor, const wchar_t* call, std::uint32_t error) {
    Win32Exception exception(descriptor, error);
    writeLog(LogLevel::error, call, exception.details());
    throw exception;
}

void failCrypto(const ErrorDescriptor& descriptor, const wchar_t* call, std::uint32_t error) {
    CryptoException exception(descriptor, error);
    writeLog(LogLevel::error, call, exception.details());
    throw exception;
}

void failCom(const ErrorDescriptor& descriptor, const wchar_t* call, HRESULT hr) {
    ComException exception(descriptor, hr);
    writeLog(LogLevel::error, call, exception.details());
    throw exception;
}

}  // namespace Corvane::detail
