// Names of zip entries: from the bytes in an archive to text, and from text to places below a folder.
#pragma once

#include "binary/bytes.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Corvane::Compression::detail {

struct RawZipName {
    std::string_view bytes;
    std::span<const std::uint8_t> extra;  // the extra field of the central directory
    std::uint16_t madeBy;                 // "version made by", its upper byte the system
    std::uint16_t flags;
};

// The data of the first field with this number in an extra field; empty when there is none.
std::span<const std::uint8_t> extraField(std::span<const std::uint8_t> extra, std::uint16_t number) noexcept;

// The name in UTF-8 with "/" between folders. In this order:
//  1. the name of the Unicode path field 0x7075 (APPNOTE.TXT 4.6.9), when it belongs to these bytes;
//  2. UTF-8, when flag 11 says so or the archive was made on Unix or macOS;
//  3. MS-DOS code page 437 when each letter that is not Latin stands alone and next to a Latin one, as the
//     accented letters of Western names do; 866 otherwise. Both have the same first half.
// Bytes that are not UTF-8 in spite of 1 and 2 come to 3.
std::string decodeZipName(const RawZipName& name);

// What exceptions say about a name that zipNameParts() does not take.
inline constexpr const wchar_t* badName = L"недопустимое имя элемента архива";

// The folders and the file that an entry's name leads to below a folder, without "." among them. Nothing for
// a name that would lead elsewhere or that Windows does not take literally: absolute ones, "..", drives and
// alternate streams (":"), wildcards, names of devices with or without an extension, a dot or a blank at the
// end, more characters than file systems take, more than 1,000 parts.
std::optional<std::vector<std::string>> zipNameParts(std::string_view name);

}  // namespace Corvane::Compression::detail
