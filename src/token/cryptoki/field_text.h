// The texts in PKCS#11's structures: UTF-8 in fields of a fixed size, filled up with blanks.
#pragma once

#include "core/utf8.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace cryptoki {

// Without what fills it up, be it blanks or, against the standard, zeros.
template <std::size_t size>
std::wstring fieldText(const unsigned char (&field)[size]) {
    std::string_view text(reinterpret_cast<const char*>(field), size);
    text = text.substr(0, text.find('\0'));
    text = text.substr(0, text.find_last_not_of(' ') + 1);
    return Corvane::fromUtf8(text);
}

}  // namespace cryptoki
