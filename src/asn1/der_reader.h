// Reading of DER (X.690): a view that walks over encoded values from left to right.
//
//     DerReader certificate = DerReader(bytes).enter(tag::sequence);
//
// Owns nothing: the bytes must live as long as what is read from them. Every rejection is an Asn1Exception
// whose text names the rule of X.690 that is broken. Pure, any thread.
#pragma once

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

// A constructed, context-specific tag, as EXPLICIT gives it.
constexpr std::uint8_t context(unsigned number) {
    return static_cast<std::uint8_t>(0xA0 | number);
}

}  // namespace tag

using View = std::span<const std::uint8_t>;

// The bits of a BIT STRING, numbered from the leftmost one.
class BitString {
public:
    // `unused`: how many bits at the end of `bytes` do not count.
    BitString(View bytes, unsigned unused) noexcept : bytes_(bytes), size_(bytes.size() * 8 - unused) {}

    // Bits beyond the end are 0.
    bool test(std::size_t bit) const noexcept {
        return bit < size_ && (bytes_[bit / 8] >> (7 - bit % 8) & 1) != 0;
    }

private:
    View bytes_;
    std::size_t size_;
};

class DerReader {
public:
    explicit DerReader(View bytes) noexcept : rest_(bytes) {}

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
    DerReader enter(std::uint8_t identifier) { return DerReader(read(identifier)); }
    // Passes over the next value, whatever it is. Tags above 30 are not supported.
    void skip();
    // Passes over the next value if it has this identifier octet.
    void skipOptional(std::uint8_t identifier);

    bool readBoolean();
    BitString readBitString();
    // In dotted text; numbers of any size.
    std::string readOid();

private:
    View take(std::size_t count);
    std::size_t readLength();

    View rest_;
};

}  // namespace asn1
