// Text in the MS-DOS code pages that names in old archives are written in.
#pragma once

#include <string>
#include <string_view>

namespace Corvane::Compression::detail {

// `page` is one of 437 and 866, in which every byte is a character.
std::string oemToUtf8(unsigned page, std::string_view text);

}  // namespace Corvane::Compression::detail
