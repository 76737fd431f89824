#include "binary/base64.h"

#include "binary/base64_sse2.h"
#include "core/log.h"

#include <algorithm>
#include <array>
#include <type_traits>

namespace Corvane {
namespace {

constexpr std::size_t groupCharacters = 4;
constexpr std::size_t groupBytes = 3;
constexpr std::size_t vectorGroups = detail::vectorCharacters / groupCharacters;
constexpr std::uint8_t noValue = 0xFF;

constexpr std::array<std::uint8_t, 256> makeValues() {
    std::array<std::uint8_t, 256> values{};
    values.fill(noValue);
    for (std::uint8_t i = 0; i < 26; ++i) {
        values['A' + i] = i;
        values['a' + i] = static_cast<std::uint8_t>(26 + i);
    }
    for (std::uint8_t i = 0; i < 10; ++i)
        values['0' + i] = static_cast<std::uint8_t>(52 + i);
    values['+'] = 62;
    values['/'] = 63;
    return values;
}

constexpr auto values = makeValues();

// Any word of a table with this bit set belongs to a character outside the alphabet.
constexpr std::uint32_t outsideAlphabet = 0x80000000;

// For each of the four places in a group, what a character there adds to the group's three bytes. The bytes
// lie in the word in memory order of a little-endian machine, so that a decoded group is stored as it stands.
constexpr std::array<std::array<std::uint32_t, 256>, groupCharacters> makeShares() {
    std::array<std::array<std::uint32_t, 256>, groupCharacters> shares{};
    for (std::size_t place = 0; place < groupCharacters; ++place) {
        for (std::size_t character = 0; character < 256; ++character) {
            const std::uint32_t bits = std::uint32_t{values[character]}
                                       << (6 * (groupCharacters - 1 - place));
            shares[place][character] = values[character] == noValue
                                           ? outsideAlphabet
                                           : ((bits >> 16) & 0xFF) | (bits & 0xFF00) | ((bits & 0xFF) << 16);
        }
    }
    return shares;
}

constexpr auto shares = makeShares();

template <typename Char>
constexpr std::uint32_t toCode(Char character) noexcept {
    return static_cast<std::make_unsigned_t<Char>>(character);
}

// The three bytes of four characters, or `outsideAlphabet` among other bits if they are not all of the
// alphabet.
template <typename Char>
std::uint32_t decodeGroup(const Char* in) noexcept {
    const std::uint32_t a = toCode(in[0]);
    const std::uint32_t b = toCode(in[1]);
    const std::uint32_t c = toCode(in[2]);
    const std::uint32_t d = toCode(in[3]);
    const std::uint32_t group =
        shares[0][a & 0xFF] | shares[1][b & 0xFF] | shares[2][c & 0xFF] | shares[3][d & 0xFF];
    return (a | b | c | d) > 0xFF ? outsideAlphabet : group;
}

// Stores a fourth byte as well, which the next group overwrites: compilers make one store of it.
void storeGroup(std::uint32_t group, std::uint8_t* out) noexcept {
    out[0] = static_cast<std::uint8_t>(group);
    out[1] = static_cast<std::uint8_t>(group >> 8);
    out[2] = static_cast<std::uint8_t>(group >> 16);
    out[3] = static_cast<std::uint8_t>(group >> 24);
}

// Decodes whole groups up to the first that a skipped character interrupts; returns how many there were.
template <typename Char>
std::size_t decodeGroups(const Char* in, std::size_t groups, std::uint8_t* out) noexcept {
    std::size_t done = 0;
    while (groups - done >= vectorGroups) {
        const std::size_t good = detail::decodeVector(in + done * groupCharacters, out + done * groupBytes);
        // Adding the constant on the usual way lets the processor start on the next vector before this one is
        // known.
        if (good != vectorGroups)
            return done + good;
        done += vectorGroups;
    }
    for (; done < groups; ++done) {
        const std::uint32_t group = decodeGroup(in + done * groupCharacters);
        if ((group & outsideAlphabet) != 0)
            break;
        storeGroup(group, out + done * groupBytes);
    }
    return done;
}

template <typename Char>
bool isInAlphabet(Char character) noexcept {
    const std::uint32_t code = toCode(character);
    return code <= 0xFF && values[code] != noValue;
}

template <typename Char>
const Char* skipForeign(const Char* in, const Char* end) noexcept {
    while (in != end && !isInAlphabet(*in))
        ++in;
    return in;
}

// Collects the next four characters of the alphabet, or what is left of them, from among skipped ones.
template <typename Char>
const Char* decodeScatteredGroup(const Char* in, const Char* end, std::uint8_t*& out) noexcept {
    std::uint32_t group = 0;
    std::size_t count = 0;
    for (; in != end && count < groupCharacters; ++in) {
        if (isInAlphabet(*in)) {
            group = (group << 6) | values[toCode(*in)];
            ++count;
        }
    }
    group <<= 6 * (groupCharacters - count);
    for (std::size_t bits = 8; bits <= 6 * count; bits += 8)
        *out++ = static_cast<std::uint8_t>(group >> (24 - bits));
    return in;
}

constexpr std::size_t blockGroups = 16384;

template <typename Char>
Bytes decode(std::basic_string_view<Char> text) {
    writeLog(LogLevel::debug, L"Corvane::base64ToBin", L"[in] length: ", text.size());
    Bytes bytes;
    bytes.reserve((text.size() / groupCharacters + 1) * groupBytes);
    // Groups go through a block that stays in the cache: growing the vector first would fill it with zeros.
    std::array<std::uint8_t, blockGroups * groupBytes + 1> block;
    const Char* in = text.data();
    const Char* const end = in + text.size();
    while (in != end) {
        std::uint8_t* out = block.data();
        for (std::size_t room = blockGroups; room != 0 && in != end;) {
            const std::size_t whole = static_cast<std::size_t>(end - in) / groupCharacters;
            const std::size_t done = decodeGroups(in, std::min(whole, room), out);
            in += done * groupCharacters;
            out += done * groupBytes;
            room -= done;
            // Line breaks mostly stand between groups, where skipping them is enough to go on fast.
            if (const Char* const next = skipForeign(in, end); next != in) {
                in = next;
            } else if (room != 0) {
                in = decodeScatteredGroup(in, end, out);
                --room;
            }
        }
        bytes.insert(bytes.end(), block.data(), out);
    }
    return bytes;
}

}  // namespace

Bytes base64ToBin(std::string_view text) {
    return decode(text);
}

Bytes base64ToBin(std::wstring_view text) {
    return decode(text);
}

}  // namespace Corvane
