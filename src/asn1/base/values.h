// What reading and writing of ASN.1 have in common: identifier octets, views, the exception. Pure.
#pragma once

#include "binary/bytes.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>

namespace asn1 {

// The text names the rule that is broken, or the limit that is passed.
class Asn1Exception : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

using Corvane::Bytes;
using View = std::span<const std::uint8_t>;

// Octets of an identifier: no registered one comes near, and dotted text costs the square of it.
inline constexpr std::size_t maxOidSize = 128;

// Identifier octets (X.690 8.1.2).
namespace tag {

inline constexpr std::uint8_t boolean = 0x01;
inline constexpr std::uint8_t integer = 0x02;
inline constexpr std::uint8_t bitString = 0x03;
inline constexpr std::uint8_t octetString = 0x04;
inline constexpr std::uint8_t null = 0x05;
inline constexpr std::uint8_t oid = 0x06;
inline constexpr std::uint8_t utf8String = 0x0C;
inline constexpr std::uint8_t numericString = 0x12;
inline constexpr std::uint8_t printableString = 0x13;
inline constexpr std::uint8_t teletexString = 0x14;
inline constexpr std::uint8_t ia5String = 0x16;
inline constexpr std::uint8_t universalString = 0x1C;
inline constexpr std::uint8_t bmpString = 0x1E;
inline constexpr std::uint8_t sequence = 0x30;
inline constexpr std::uint8_t set = 0x31;

// What tells a constructed value from a primitive one.
inline constexpr std::uint8_t constructed = 0x20;

// A constructed, context-specific tag, as EXPLICIT gives it.
constexpr std::uint8_t context(unsigned number) {
    return static_cast<std::uint8_t>(0xA0 | number);
}

// A primitive, context-specific tag, as IMPLICIT gives it to a string.
constexpr std::uint8_t contextPrimitive(unsigned number) {
    return static_cast<std::uint8_t>(0x80 | number);
}

}  // namespace tag
}  // namespace asn1
