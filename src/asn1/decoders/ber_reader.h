// Reading of BER and of its strict form, DER (X.690): a view that walks over encoded values from left to
// right.
//
//     BerReader certificate = BerReader(bytes).enter(tag::sequence);
//
// DER is for what is compared or signed, BER for what others wrote. Owns nothing: the bytes must live as long
// as what is read from them. Made for foreign input: nothing is taken for granted before it was compared with
// what is left, nothing is allocated but what readOctetString() and readBitString() join, and the work is
// bounded by maxNesting times the size. Every rejection is an Asn1Exception whose text names the rule of
// X.690 that is broken or the limit that is passed. Pure, any thread.
#pragma once

#include "binary/bytes.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>

namespace asn1 {

class Asn1Exception : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Identifier octets (X.690 8.1.2).
namespace tag {

inline constexpr std::uint8_t boolean = 0x01;
inline constexpr std::uint8_t integer = 0x02;
inline constexpr std::uint8_t bitString = 0x03;
inline constexpr std::uint8_t octetString = 0x04;
inline constexpr std::uint8_t oid = 0x06;
inline constexpr std::uint8_t sequence = 0x30;
inline constexpr std::uint8_t set = 0x31;

// What tells a constructed value from a primitive one.
inline constexpr std::uint8_t constructed = 0x20;

// A constructed, context-specific tag, as EXPLICIT gives it.
constexpr std::uint8_t context(unsigned number) {
    return static_cast<std::uint8_t>(0xA0 | number);
}

}  // namespace tag

using Corvane::Bytes;
using View = std::span<const std::uint8_t>;

enum class Rules : std::uint8_t {
    der,
    // Also indefinite lengths, lengths in more octets than they need, strings in segments, any octet but 0
    // for TRUE, unused bits that are set.
    ber,
};

// How deep values may lie in one another, counted from the first reader.
inline constexpr unsigned maxNesting = 64;
// Octets of an identifier: no registered one comes near, and dotted text costs the square of it.
inline constexpr std::size_t maxOidSize = 128;

// The bits of a BIT STRING, numbered from the leftmost one.
class BitString {
public:
    // `unused`: how many bits at the end of `bytes` do not count.
    BitString(View bytes, unsigned unused) noexcept : bytes_(bytes), size_(bytes.size() * 8 - unused) {}

    std::size_t size() const noexcept { return size_; }
    // Bits beyond the end are 0.
    bool test(std::size_t bit) const noexcept {
        return bit < size_ && (bytes_[bit / 8] >> (7 - bit % 8) & 1) != 0;
    }

private:
    View bytes_;
    std::size_t size_;
};

class BerReader {
public:
    explicit BerReader(View bytes, Rules rules = Rules::der) noexcept : rest_(bytes), rules_(rules) {}

    bool atEnd() const noexcept { return rest_.empty(); }
    // For where nothing may be left over.
    void expectEnd() const;
    // Whether the next value has this identifier octet; false at the end.
    bool isNext(std::uint8_t identifier) const noexcept {
        return !rest_.empty() && rest_.front() == identifier;
    }

    // The contents of the next value, which must have this identifier octet.
    View read(std::uint8_t identifier);
    // A reader of the values inside the next one.
    BerReader enter(std::uint8_t identifier);
    // The same for the last value in the beginning of an encoding whose rest is not there: a reader of as
    // much of it as there is, with the end-of-contents octets where the length is indefinite.
    BerReader enterBeginning(std::uint8_t identifier);
    // The next value whole, with its identifier and length, whatever it is.
    View readWhole();
    // Passes over the next value, whatever it is.
    void skip();
    // Passes over the next value if it has this identifier octet.
    void skipOptional(std::uint8_t identifier);

    bool readBoolean();
    // In dotted text; numbers of any size, within maxOidSize.
    std::string readOid();
    // `joined` is where the segments are put together when a string came in some; what is returned is a view
    // of it then, and of the encoding otherwise.
    View readOctetString(Bytes& joined);
    BitString readBitString(Bytes& joined);

private:
    BerReader(View bytes, Rules rules, unsigned depth) noexcept
        : rest_(bytes), rules_(rules), depth_(depth) {}

    View take(std::uint64_t count);
    void readTag();
    bool readLength(std::uint64_t& length);
    bool readHeader(std::uint8_t identifier, std::uint64_t& length);
    void expectNext(std::uint8_t identifier) const;
    View readValue();
    View readIndefinite();
    template <class Take>
    void forEachSegment(std::uint8_t identifier, Take take);

    View rest_;
    Rules rules_;
    unsigned depth_ = 0;
};

}  // namespace asn1
