#include "binary/base64.h"

#include "core/errors.h"
#include "core/exception.h"
#include "core/log.h"

#include <array>
#include <bit>
#include <cstring>
#include <limits>

namespace Corvane {
namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::size_t groupBytes = 3;
constexpr std::size_t groupCharacters = 4;
constexpr std::size_t lineGroups = 19;
constexpr std::size_t lineBytes = lineGroups * groupBytes;

template <typename Char>
using Pair = std::array<Char, 2>;

// Twelve bits become two characters at one look-up, which halves the loads and stores of the textbook method.
template <typename Char>
constexpr std::array<Pair<Char>, 4096> makePairs() {
    std::array<Pair<Char>, 4096> pairs{};
    for (std::size_t bits = 0; bits < pairs.size(); ++bits)
        pairs[bits] = {static_cast<Char>(alphabet[bits >> 6]), static_cast<Char>(alphabet[bits & 63])};
    return pairs;
}

template <typename Char>
constexpr auto pairTable = makePairs<Char>();

template <typename Char>
Char* writePair(std::uint32_t bits, Char* out) noexcept {
    const auto& pair = pairTable<Char>[bits & 0xFFF];
    std::memcpy(out, pair.data(), sizeof(pair));
    return out + pair.size();
}

template <typename Char>
Char* encodeGroup(const std::uint8_t* in, Char* out) noexcept {
    const std::uint32_t bits = (std::uint32_t{in[0]} << 16) | (std::uint32_t{in[1]} << 8) | in[2];
    out = writePair(bits >> 12, out);
    return writePair(bits, out);
}

std::uint64_t loadBigEndian(const std::uint8_t* in) noexcept {
    static_assert(std::endian::native == std::endian::little);
    std::uint64_t bits = 0;
    std::memcpy(&bits, in, sizeof(bits));
    return __builtin_bswap64(bits);
}

// Two groups from one load of eight bytes, of which the last two are not used.
template <typename Char>
Char* encodeTwoGroups(const std::uint8_t* in, Char* out) noexcept {
    const std::uint64_t bits = loadBigEndian(in);
    const auto upper = static_cast<std::uint32_t>(bits >> 40);
    const auto lower = static_cast<std::uint32_t>(bits >> 16);
    out = writePair(upper >> 12, out);
    out = writePair(upper, out);
    out = writePair(lower >> 12, out);
    return writePair(lower, out);
}

// A line has an odd number of groups, so that the loads of its nine double groups end inside its 57 bytes.
template <typename Char>
Char* encodeLine(const std::uint8_t* in, Char* out) noexcept {
    for (std::size_t group = 0; group + 1 < lineGroups; group += 2)
        out = encodeTwoGroups(in + group * groupBytes, out);
    return encodeGroup(in + (lineGroups - 1) * groupBytes, out);
}

template <typename Char>
Char* encodeRest(std::span<const std::uint8_t> rest, bool padded, Char* out) noexcept {
    if (rest.empty())
        return out;
    const std::array<std::uint8_t, groupBytes> group{rest[0], rest.size() > 1 ? rest[1] : std::uint8_t{0}, 0};
    std::array<Char, groupCharacters> characters;
    encodeGroup(group.data(), characters.data());
    for (std::size_t i = 0; i <= rest.size(); ++i)
        *out++ = characters[i];
    for (std::size_t i = rest.size(); padded && i < groupBytes; ++i)
        *out++ = Char{'='};
    return out;
}

template <typename Char>
Char* encode(std::span<const std::uint8_t> bytes, std::uint32_t flags, Char* out) {
    writeLog(LogLevel::debug, L"Corvane::binToBase64", L"[in] size: ", bytes.size(), L" [in] flags: ", flags);
    const bool lineBreaks = (flags & base64NoLineBreaks) == 0;
    const std::uint8_t* in = bytes.data();
    std::size_t left = bytes.size();
    for (; left >= lineBytes; left -= lineBytes, in += lineBytes) {
        out = encodeLine(in, out);
        if (lineBreaks) {
            *out++ = Char{'\r'};
            *out++ = Char{'\n'};
        }
    }
    for (; left >= groupBytes; left -= groupBytes, in += groupBytes)
        out = encodeGroup(in, out);
    return encodeRest({in, left}, (flags & base64NoPadding) == 0, out);
}

}  // namespace

std::size_t getBinToBase64RequiredSize(std::int64_t size, std::uint32_t flags) {
    if (size < 0)
        throw Exception(E_STRING_MAX_SIZE);
    if (size > std::int64_t{std::numeric_limits<std::uint32_t>::max() / groupCharacters})
        throw Exception(E_BINARY_MAX_SIZE);
    const auto byteCount = static_cast<std::size_t>(size);
    const std::size_t groups = byteCount / groupBytes;
    const std::size_t rest = byteCount % groupBytes;
    std::size_t characters = groups * groupCharacters;
    if (rest != 0)
        characters += (flags & base64NoPadding) != 0 ? rest + 1 : groupCharacters;
    if ((flags & base64NoLineBreaks) == 0)
        characters += groups / lineGroups * 2;
    return characters;
}

char* encodeBase64(std::span<const std::uint8_t> bytes, std::uint32_t flags, char* out) {
    return encode(bytes, flags, out);
}

wchar_t* encodeBase64(std::span<const std::uint8_t> bytes, std::uint32_t flags, wchar_t* out) {
    return encode(bytes, flags, out);
}

std::wstring binToBase64(std::span<const std::uint8_t> bytes, std::uint32_t flags) {
    std::wstring text(getBinToBase64RequiredSize(static_cast<std::int64_t>(bytes.size()), flags), L'\0');
    encodeBase64(bytes, flags, text.data());
    return text;
}

}  // namespace Corvane
