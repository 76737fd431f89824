#include "core/check.h"

#include "core/log.h"

namespace Corvane::detail {
namespace {

// Many numbers, of vendors' providers above all, have no text.
void logFailure(const wchar_t* call, std::uint32_t number) {
    if (!isLogEnabled(LogLevel::error))
        return;
    const std::wstring text = systemText(number);
    writeLog(LogLevel::error, call, text.empty() ? hexNumber(number) : text);
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

}  // namespace Corvane::detail
