#include "token/enroll/pin.h"

#include "core/check.h"

namespace Corvane::detail {

SecretNarrowText pinText(std::wstring_view pin) {
    // A unit of UTF-16 never takes more than three bytes.
    constexpr std::size_t longestPin = 1024;
    if (pin.size() > longestPin)
        failWin32(E_WIDE_TO_ANSI, L"WideCharToMultiByte", ERROR_INSUFFICIENT_BUFFER);
    SecretNarrowText text(pin.size() * 3);
    if (pin.empty())
        return text;
    // What is no text is no PIN, and does not cost a try.
    const int size =
        ::WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, pin.data(), static_cast<int>(pin.size()),
                              text.data(), static_cast<int>(text.size()), nullptr, nullptr);
    checkWin32(size, E_WIDE_TO_ANSI, L"WideCharToMultiByte");
    text.resize(static_cast<std::size_t>(size));
    return text;
}

}  // namespace Corvane::detail
