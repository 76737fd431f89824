#include "binary/hex.h"

#include "core/errors.h"
#include "core/exception.h"
#include "core/log.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace Corvane {
namespace {

constexpr char digits[] = "0123456789ABCDEF";

template <typename Char>
constexpr std::array<std::array<Char, 2>, 256> makePairs() {
    std::array<std::array<Char, 2>, 256> pairs{};
    for (std::size_t byte = 0; byte < pairs.size(); ++byte)
        pairs[byte] = {static_cast<Char>(digits[byte >> 4]), static_cast<Char>(digits[byte & 15])};
    return pairs;
}

template <typename Char>
constexpr auto pairTable = makePairs<Char>();

template <typename Char>
Char* encode(std::span<const std::uint8_t> bytes, Char* out) noexcept {
    for (const std::uint8_t byte : bytes) {
        const auto& pair = pairTable<Char>[byte];
        std::memcpy(out, pair.data(), sizeof(pair));
        out += pair.size();
    }
    return out;
}

constexpr std::uint16_t notDigit = 0x8000;

// The value of a digit moved left by `shift` bits, or `notDigit`.
constexpr std::array<std::uint16_t, 256> makeValues(unsigned shift) {
    std::array<std::uint16_t, 256> values{};
    values.fill(notDigit);
    for (unsigned i = 0; i < 10; ++i)
        values['0' + i] = static_cast<std::uint16_t>(i << shift);
    for (unsigned i = 10; i < 16; ++i)
        values['A' + i - 10] = values['a' + i - 10] = static_cast<std::uint16_t>(i << shift);
    return values;
}

constexpr auto highValues = makeValues(4);
constexpr auto lowValues = makeValues(0);

// Decodes `count` pairs; false if any of their characters is not a digit. To leave at the first one, rather
// than to test once at the end, keeps compilers from vectorizing the look-ups, which makes them several times
// slower.
template <typename Char>
bool decodePairs(const Char* in, std::size_t count, std::uint8_t* out) noexcept {
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned high = highValues[static_cast<std::uint8_t>(in[2 * i])];
        const unsigned low = lowValues[static_cast<std::uint8_t>(in[2 * i + 1])];
        const unsigned byte = high | low;
        if ((byte & notDigit) != 0)
            return false;
        out[i] = static_cast<std::uint8_t>(byte);
    }
    return true;
}

template <typename Char>
Bytes decode(std::basic_string_view<Char> text) {
    writeLog(LogLevel::debug, L"Corvane::hexToBin", L"[in] length: ", text.size());
    Bytes bytes;
    bytes.reserve(text.size() / 2);
    // Pairs go through a block that stays in the cache: growing the vector first would fill it with zeros.
    std::array<std::uint8_t, 4096> block;
    const std::size_t pairs = text.size() / 2;
    for (std::size_t done = 0; done < pairs;) {
        const std::size_t count = std::min(pairs - done, block.size());
        if (!decodePairs(text.data() + 2 * done, count, block.data()))
            throw Exception(E_HEX_STRING);
        bytes.insert(bytes.end(), block.data(), block.data() + count);
        done += count;
    }
    if (text.size() % 2 != 0)
        throw Exception(E_HEX_STRING_SIZE);
    return bytes;
}

void logEncoding(std::span<const std::uint8_t> bytes) {
    writeLog(LogLevel::debug, L"Corvane::binToHex", L"[in] size: ", bytes.size());
}

}  // namespace

char* encodeHex(std::span<const std::uint8_t> bytes, char* out) {
    logEncoding(bytes);
    return encode(bytes, out);
}

wchar_t* encodeHex(std::span<const std::uint8_t> bytes, wchar_t* out) {
    logEncoding(bytes);
    return encode(bytes, out);
}

std::wstring binToHex(std::span<const std::uint8_t> bytes) {
    std::wstring text(bytes.size() * 2, L'\0');
    encodeHex(bytes, text.data());
    return text;
}

Bytes hexToBin(std::string_view text) {
    return decode(text);
}

Bytes hexToBin(std::wstring_view text) {
    return decode(text);
}

}  // namespace Corvane
