#include "core/check.h"

#include "core/log.h"

namespace Corvane {
namespace {

void logFailure(const wchar_t* call, std::uint32_t number) {
    if (isLogEnabled(LogLevel::error))
        writeLog(LogLevel::error, call, numberForLog(number));
}

}  // namespace

void failWin32(const ErrorDescriptor& descriptor, const wchar_t* call, std::uint32_t error) {
    logFailure(call, error);
    throw Win32Exception(descriptor, error);
}

void failCrypto(const ErrorDescriptor& descriptor, const wchar_t* call, std::uint32_t error) {
    logFailure(call, error);
    throw CryptoException(descriptor, error);
}

void failCom(const ErrorDescriptor& descriptor, const wchar_t* call, HRESULT hr) {
    logFailure(call, static_cast<std::uint32_t>(hr));
    throw ComException(descriptor, hr);
}

}  // namespace Corvane
