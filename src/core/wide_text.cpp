#include "core/wide_text.h"

#include "core/check.h"
#include "core/log.h"

#include <limits>
#include <stdexcept>

namespace Corvane {
namespace {

// The system's conversions count in int.
int checkedLength(std::size_t length) {
    if (length > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw Exception(E_STRING_MAX_SIZE);
    return static_cast<int>(length);
}

template <class Char>
std::basic_string_view<Char> checkedView(const Char* text) {
    if (!text)
        throw std::invalid_argument("Source is null");
    return text;
}

std::wstring decode(unsigned codePage, std::string_view text) {
    std::wstring wide;
    if (text.empty())
        return wide;
    const int length = checkedLength(text.size());
    const auto convert = [&](wchar_t* buffer, int size) {
        return checkWin32(::MultiByteToWideChar(codePage, 0, text.data(), length, buffer, size),
                          E_ANSI_TO_WIDE, L"MultiByteToWideChar");
    };
    wide.resize(static_cast<std::size_t>(convert(nullptr, 0)));
    wide.resize(static_cast<std::size_t>(convert(wide.data(), static_cast<int>(wide.size()))));
    return wide;
}

std::string encode(unsigned codePage, std::wstring_view text) {
    std::string multi;
    if (text.empty())
        return multi;
    const int length = checkedLength(text.size());
    const auto convert = [&](char* buffer, int size) {
        return checkWin32(
            ::WideCharToMultiByte(codePage, 0, text.data(), length, buffer, size, nullptr, nullptr),
            E_WIDE_TO_ANSI, L"WideCharToMultiByte");
    };
    multi.resize(static_cast<std::size_t>(convert(nullptr, 0)));
    multi.resize(static_cast<std::size_t>(convert(multi.data(), static_cast<int>(multi.size()))));
    return multi;
}

}  // namespace

std::wstring multiToWide(unsigned codePage, std::string_view text) {
    writeLog(LogLevel::debug, L"Corvane::multiToWide", L"[in] code page: ", codePage, L" [in] size: ",
             text.size());
    return decode(codePage, text);
}

std::string wideToMulti(unsigned codePage, std::wstring_view text) {
    writeLog(LogLevel::debug, L"Corvane::wideToMulti", L"[in] code page: ", codePage, L" [in] length: ",
             text.size());
    return encode(codePage, text);
}

std::wstring multiToWide(unsigned codePage, const char* text) {
    return multiToWide(codePage, checkedView(text));
}

std::string wideToMulti(unsigned codePage, const wchar_t* text) {
    return wideToMulti(codePage, checkedView(text));
}

}  // namespace Corvane
