// The forms in which pages get an authority's answer. Pure, any thread.
#pragma once

#include "binary/bytes.h"

#include <string_view>

namespace Corvane {

// The bytes of an answer: what hexadecimal digits stand for, of either case, with spaces and line breaks
// anywhere and "{ASN}" before them or not; otherwise each character is a byte, and Base64 stays as it is.
// Empty where a character is above 0xFF.
Bytes responseBytes(std::wstring_view response);

}  // namespace Corvane
