// Conversions between wide (UTF-16) text and narrow text in a code page of the system. (UTF-8 needs no
// system.)
#pragma once

#include "core/utf8.h"

#include <string>
#include <string_view>

namespace Corvane {

// Decodes `text` with MultiByteToWideChar and no flags. Embedded zeros are kept; an empty text does not
// reach the system. Throws Win32Exception E_ANSI_TO_WIDE, and E_STRING_MAX_SIZE above 2 GiB.
std::wstring multiToWide(unsigned codePage, std::string_view text);

// Encodes `text` with WideCharToMultiByte and no flags; throws Win32Exception E_WIDE_TO_ANSI,
// and E_STRING_MAX_SIZE above 2 GiB.
std::string wideToMulti(unsigned codePage, std::wstring_view text);

// The same for texts ended by a zero; a null pointer is a std::invalid_argument "Source is null".
std::wstring multiToWide(unsigned codePage, const char* text);
std::string wideToMulti(unsigned codePage, const wchar_t* text);

}  // namespace Corvane
