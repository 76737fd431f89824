#include "core/system_exception.h"

#include "core/handles.h"

#include <array>
#include <charconv>

namespace Corvane {

std::wstring hexNumber(std::uint32_t number) {
    std::array<char, 8> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16).ptr;
    return L"0x" + std::wstring(digits.data(), end);
}

std::wstring systemText(std::uint32_t number) {
    LocalMemory<wchar_t> buffer;
    DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        number, 0, reinterpret_cast<wchar_t*>(buffer.put()), 0, nullptr);
    if (length == 0)
        return {};
    const wchar_t* text = buffer.get();
    if (length > 2 && text[length - 2] == L'\r' && text[length - 1] == L'\n')
        length -= 2;
    return hexNumber(number) + L":" + std::wstring(text, length);
}

std::wstring numberForLog(std::uint32_t number) {
    std::wstring text = systemText(number);
    return text.empty() ? hexNumber(number) : text;
}

std::wstring Win32Exception::details() const {
    return systemText(error_);
}

std::wstring CommDlgException::details() const {
    return hexNumber(error_);
}

}  // namespace Corvane

std::wstring ComException::details() const {
    return Corvane::systemText(static_cast<std::uint32_t>(hr_));
}
