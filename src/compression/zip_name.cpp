#include "compression/zip_name.h"

#include "binary/utf.h"
#include "compression/little_endian.h"
#include "compression/oem_text.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <numeric>

namespace Corvane::Compression::detail {
namespace {

constexpr std::uint16_t utf8Flag = 1 << 11;
constexpr std::uint16_t unicodePathField = 0x7075;
// "Version made by" (APPNOTE.TXT 4.4.2.2).
constexpr int madeOnUnix = 3;
constexpr int madeOnMacOs = 19;

// In UTF-16, as Windows counts: what file systems take for one name, and what the system takes for a path
// (32,767), less some room for the folder.
constexpr std::size_t longestPart = 255;
constexpr std::size_t longestName = 32000;
// Folders one in another that a program may still be expected to walk through.
constexpr std::size_t deepest = 1000;

std::span<const std::uint8_t> bytesOf(std::string_view text) noexcept {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

bool isHigh(char c) noexcept {
    return static_cast<unsigned char>(c) >= 0x80;
}

bool isLatin(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Version 1, the CRC-32 of the bytes that it stands for, the name.
std::optional<std::string> unicodePath(const RawZipName& name) {
    constexpr std::size_t head = 5;
    const auto field = extraField(name.extra, unicodePathField);
    if (field.size() <= head || field[0] != 1)
        return std::nullopt;
    const auto raw = bytesOf(name.bytes);
    if (littleEndian(field.subspan(1, 4)) != crc32(0, raw.data(), static_cast<uInt>(raw.size())))
        return std::nullopt;
    const auto text = field.subspan(head);
    return isUtf8(text) ? std::optional(std::string(text.begin(), text.end())) : std::nullopt;
}

bool saysUtf8(const RawZipName& name) noexcept {
    const int system = name.madeBy >> 8;
    return (name.flags & utf8Flag) != 0 || system == madeOnUnix || system == madeOnMacOs;
}

bool looksWestern(std::string_view name) noexcept {
    bool western = false;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (!isHigh(name[i]))
            continue;
        const char before = i > 0 ? name[i - 1] : '\0';
        const char after = i + 1 < name.size() ? name[i + 1] : '\0';
        if (isHigh(before) || isHigh(after) || !(isLatin(before) || isLatin(after)))
            return false;
        western = true;
    }
    return western;
}

std::string decodeOem(std::string_view name) {
    constexpr unsigned cp437 = 437;
    constexpr unsigned cp866 = 866;
    return oemToUtf8(looksWestern(name) ? cp437 : cp866, name);
}

// What Windows takes for a device in any folder, whatever the extension.
bool isDevice(std::string_view part) {
    std::string name(part.substr(0, part.find('.')));
    name.resize(name.find_last_not_of(' ') + 1);
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    constexpr std::array<std::string_view, 7> devices{"CON",    "PRN",     "AUX",   "NUL",
                                                      "CONIN$", "CONOUT$", "CLOCK$"};
    if (std::find(devices.begin(), devices.end(), name) != devices.end())
        return true;
    if (!name.starts_with("COM") && !name.starts_with("LPT"))
        return false;
    const std::string_view number = std::string_view(name).substr(3);
    return (number.size() == 1 && number[0] >= '0' && number[0] <= '9') || number == "\u00B9" ||
           number == "\u00B2" || number == "\u00B3";
}

// Of well-formed UTF-8.
std::size_t utf16Size(std::string_view text) noexcept {
    const auto units = [](std::size_t sum, char c) {
        const auto byte = static_cast<unsigned char>(c);
        const bool follows = (byte & 0xC0) == 0x80;
        return sum + (follows ? 0u : byte >= 0xF0 ? 2u : 1u);
    };
    return std::accumulate(text.begin(), text.end(), std::size_t{0}, units);
}

bool isSafe(std::string_view part) {
    const bool plain = std::none_of(part.begin(), part.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 ||
               std::string_view("<>:\"|?*\\").find(c) != std::string_view::npos;
    });
    return plain && !part.empty() && part.back() != '.' && part.back() != ' ' && !isDevice(part) &&
           utf16Size(part) <= longestPart;
}

}  // namespace

std::span<const std::uint8_t> extraField(std::span<const std::uint8_t> extra, std::uint16_t number) noexcept {
    constexpr std::size_t head = 4;
    while (extra.size() >= head) {
        const auto size = static_cast<std::size_t>(littleEndian(extra.subspan(2, 2)));
        const auto data = extra.subspan(head);
        if (size > data.size())
            return {};
        if (littleEndian(extra.first(2)) == number)
            return data.first(size);
        extra = data.subspan(size);
    }
    return {};
}

std::string decodeZipName(const RawZipName& name) {
    std::string text;
    if (auto path = unicodePath(name))
        text = std::move(*path);
    else if (saysUtf8(name) && isUtf8(bytesOf(name.bytes)))
        text = name.bytes;
    else
        text = decodeOem(name.bytes);
    // Some programs write what Windows uses.
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

std::optional<std::vector<std::string>> zipNameParts(std::string_view name) {
    if (!isUtf8(bytesOf(name)) || utf16Size(name) > longestName)
        return std::nullopt;
    if (name.ends_with('/'))
        name.remove_suffix(1);
    std::vector<std::string> parts;
    for (bool more = true; more;) {
        const std::size_t end = name.find('/');
        const std::string_view part = name.substr(0, end);
        if (part != "." && !isSafe(part))
            return std::nullopt;
        if (part != ".")
            parts.emplace_back(part);
        if (parts.size() > deepest)
            return std::nullopt;
        more = end != std::string_view::npos;
        name.remove_prefix(more ? end + 1 : name.size());
    }
    return parts;
}

}  // namespace Corvane::Compression::detail
