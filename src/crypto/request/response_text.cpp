#include "crypto/request/response_text.h"

#include "binary/hex.h"

#include <algorithm>
#include <string>

namespace Corvane {
namespace {

constexpr bool isSpace(wchar_t c) {
    return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n';
}

constexpr bool isHexDigit(wchar_t c) {
    return (c >= L'0' && c <= L'9') || (c >= L'A' && c <= L'F') || (c >= L'a' && c <= L'f');
}

}  // namespace

Bytes responseBytes(std::wstring_view response) {
    if (std::ranges::any_of(response, [](wchar_t c) { return c > 0xFF; }))
        return {};
    std::wstring digits(response);
    std::erase_if(digits, isSpace);
    if (digits.starts_with(L"{ASN}"))
        digits.erase(0, 5);
    if (!digits.empty() && digits.size() % 2 == 0 && std::ranges::all_of(digits, isHexDigit))
        return hexToBin(digits);
    return {response.begin(), response.end()};
}

}  // namespace Corvane
