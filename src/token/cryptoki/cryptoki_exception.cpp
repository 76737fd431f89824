#include "token/cryptoki/cryptoki_exception.h"

#include "core/log.h"
#include "token/cryptoki/return_values.h"

#include <string>
#include <string_view>

namespace cryptoki {

CryptokiException::CryptokiException(CK_RV value, const char* call)
    : std::runtime_error(std::string(call) + ": " + returnValueText(value)), value_(value), call_(call) {}

void CryptokiCalls::fail(CK_RV value, const char* call) {
    const std::string_view name = call;
    Corvane::writeLog(Corvane::LogLevel::error, std::wstring(name.begin(), name.end()),
                      returnValueText(value).c_str());
    throw CryptokiException(value, call);
}

}  // namespace cryptoki
