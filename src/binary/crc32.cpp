#include "binary/crc32.h"

#include "core/log.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <utility>

namespace Corvane::Binary {
namespace {

// Bit 31 of a word is the coefficient of x^0, bit 0 that of x^31; x^32 is left out.
constexpr std::uint32_t polynomial = 0xEDB88320;
constexpr std::uint32_t one = 0x80000000;

constexpr std::uint32_t timesX(std::uint32_t value) noexcept {
    return (value >> 1) ^ ((value & 1) != 0 ? polynomial : 0);
}

constexpr std::size_t sliceSize = 8;

// tables[count][byte] is what a byte adds that `count` more bytes of its slice follow.
constexpr auto makeTables() {
    std::array<std::array<std::uint32_t, 256>, sliceSize> tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t value = byte;
        for (auto& table : tables) {
            for (int bit = 0; bit < 8; ++bit)
                value = timesX(value);
            table[byte] = value;
        }
    }
    return tables;
}

constexpr auto tables = makeTables();

constexpr std::uint32_t addByte(std::uint32_t crc, std::uint32_t byte) noexcept {
    return (crc >> 8) ^ tables[0][(crc ^ byte) & 0xFF];
}

// Each look-up waits for the one before it, so a single pass leaves most of the processor idle. Lanes of
// equal length are computed side by side instead; as many as there are registers for.
constexpr std::size_t laneCount = sizeof(void*) == 8 ? 8 : 4;
using Lanes = std::make_index_sequence<laneCount>;

constexpr std::size_t wordSize = 4;

std::uint32_t loadWord(const std::uint8_t* in) noexcept {
    static_assert(std::endian::native == std::endian::little);
    std::uint32_t word = 0;
    std::memcpy(&word, in, sizeof(word));
    return word;
}

// What four bytes add that `following` more bytes of their slice follow.
template <std::size_t following>
std::uint32_t addWord(std::uint32_t word) noexcept {
    return tables[following + 3][word & 0xFF] ^ tables[following + 2][(word >> 8) & 0xFF] ^
           tables[following + 1][(word >> 16) & 0xFF] ^ tables[following][word >> 24];
}

// What is too short for lanes: the look-ups of a slice do not wait for each other.
std::uint32_t addWholeSlices(std::uint32_t crc, std::span<const std::uint8_t>& bytes) noexcept {
    for (; bytes.size() >= sliceSize; bytes = bytes.subspan(sliceSize))
        crc = addWord<wordSize>(crc ^ loadWord(bytes.data())) ^ addWord<0>(loadWord(bytes.data() + wordSize));
    return crc;
}

// x to the power of the number of bits of a lane: by what a checksum is multiplied when a lane of zeros
// follows.
template <std::size_t laneSize>
constexpr std::uint32_t makeShift() {
    std::uint32_t value = one;
    for (std::size_t bit = 0; bit < 8 * laneSize; ++bit)
        value = timesX(value);
    return value;
}

// The product of two polynomials, modulo the polynomial.
std::uint32_t multiply(std::uint32_t left, std::uint32_t right) noexcept {
    std::uint32_t product = 0;
    for (int bit = 0; bit < 32; ++bit) {
        product ^= (left & one) != 0 ? right : 0;
        left <<= 1;
        right = timesX(right);
    }
    return product;
}

// Takes in all lanes that stand one behind the other at `in`.
template <std::size_t laneSize, std::size_t... lane>
std::uint32_t addLanes(std::uint32_t crc, const std::uint8_t* in, std::index_sequence<lane...>) noexcept {
    std::array<std::uint32_t, laneCount> lanes{crc};
    for (std::size_t offset = 0; offset < laneSize; offset += wordSize) {
        ((lanes[lane] ^= loadWord(in + lane * laneSize + offset)), ...);
        for (std::size_t i = 0; i < wordSize; ++i)
            ((lanes[lane] = addByte(lanes[lane], 0)), ...);
    }
    constexpr std::uint32_t shift = makeShift<laneSize>();
    std::uint32_t sum = lanes[0];
    for (std::size_t i = 1; i < laneCount; ++i)
        sum = multiply(sum, shift) ^ lanes[i];
    return sum;
}

template <std::size_t laneSize>
std::uint32_t addWholeLanes(std::uint32_t crc, std::span<const std::uint8_t>& bytes) noexcept {
    for (constexpr std::size_t step = laneCount * laneSize; bytes.size() >= step; bytes = bytes.subspan(step))
        crc = addLanes<laneSize>(crc, bytes.data(), Lanes());
    return crc;
}

}  // namespace

std::uint32_t getCrc32(std::span<const std::uint8_t> bytes, std::uint32_t initial) {
    writeLog(LogLevel::debug, L"Corvane::Binary::getCrc32", L"[in] size: ", bytes.size(), L" [in] initial: ",
             initial);
    return continueCrc32(bytes, initial);
}

std::uint32_t continueCrc32(std::span<const std::uint8_t> bytes, std::uint32_t crc) noexcept {
    crc = ~crc;
    crc = addWholeLanes<4096>(crc, bytes);
    crc = addWholeLanes<128>(crc, bytes);
    crc = addWholeSlices(crc, bytes);
    for (const std::uint8_t byte : bytes)
        crc = addByte(crc, byte);
    return ~crc;
}

}  // namespace Corvane::Binary
