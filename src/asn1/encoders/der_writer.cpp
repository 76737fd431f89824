#include "asn1/encoders/der_writer.h"

#include "asn1/encoders/object_identifier.h"
#include "core/utf8.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace asn1 {
namespace {

// Identifier and length octets: definite, as short as can be (X.690 10.1).
Bytes header(std::uint8_t identifier, std::size_t length) {
    if (length > std::numeric_limits<std::uint32_t>::max())
        throw Asn1Exception("a length beyond 32 bits");
    if (length < 0x80)
        return {identifier, static_cast<std::uint8_t>(length)};
    Bytes octets;
    for (std::size_t left = length; left != 0; left >>= 8)
        octets.insert(octets.begin(), static_cast<std::uint8_t>(left & 0xFF));
    octets.insert(octets.begin(), {identifier, static_cast<std::uint8_t>(0x80 | octets.size())});
    return octets;
}

constexpr bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// X.680 41.4.
constexpr bool isPrintable(char c) {
    return isDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
           std::string_view(" '()+,-./:=?").find(c) != std::string_view::npos;
}

bool isUtf8(std::string_view text) {
    View left(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    while (!left.empty()) {
        const std::size_t length = Corvane::detail::readUtf8(left).length;
        if (length == 0)
            return false;
        left = left.subspan(length);
    }
    return true;
}

}  // namespace

bool fitsStringType(std::uint8_t identifier, std::string_view text) {
    switch (identifier) {
        case tag::utf8String:
            return isUtf8(text);
        case tag::printableString:
            return std::ranges::all_of(text, isPrintable);
        case tag::numericString:
            return std::ranges::all_of(text, [](char c) { return isDigit(c) || c == ' '; });
        case tag::ia5String:
            return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
        default:
            return false;
    }
}

DerWriter& DerWriter::value(std::uint8_t identifier, View contents) {
    return encoded(header(identifier, contents.size())).encoded(contents);
}

DerWriter& DerWriter::encoded(View values) {
    bytes_.insert(bytes_.end(), values.begin(), values.end());
    return *this;
}

DerWriter& DerWriter::wrap(std::uint8_t identifier, std::size_t begin) {
    const Bytes octets = header(identifier, bytes_.size() - begin);
    bytes_.insert(bytes_.begin() + static_cast<std::ptrdiff_t>(begin), octets.begin(), octets.end());
    return *this;
}

DerWriter& DerWriter::boolean(bool value) {
    const std::uint8_t octet = value ? 0xFF : 0;
    return this->value(tag::boolean, {&octet, 1});
}

DerWriter& DerWriter::integer(std::int64_t number) {
    Bytes octets;
    // The sign of what is written must be that of what is left (X.690 8.3.2).
    for (bool complete = false; !complete; number >>= 8) {
        const auto octet = static_cast<std::uint8_t>(number & 0xFF);
        octets.insert(octets.begin(), octet);
        complete = number >> 7 == 0 || number >> 7 == -1;
    }
    return value(tag::integer, octets);
}

DerWriter& DerWriter::oid(std::string_view dotted) {
    return value(tag::oid, oidContents(dotted));
}

DerWriter& DerWriter::bitString(View octets, unsigned unused) {
    if (unused > 7 || (unused != 0 && octets.empty()))
        throw Asn1Exception("a wrong number of unused bits (X.690 8.6.2)");
    Bytes contents{static_cast<std::uint8_t>(unused)};
    contents.insert(contents.end(), octets.begin(), octets.end());
    if (unused != 0)
        contents.back() &= static_cast<std::uint8_t>(0xFF << unused);
    return value(tag::bitString, contents);
}

DerWriter& DerWriter::namedBits(std::uint32_t bits) {
    Bytes octets;
    unsigned unused = 0;
    for (unsigned bit = 0; bits >> bit != 0; ++bit) {
        if (bit % 8 == 0)
            octets.push_back(0);
        if ((bits >> bit & 1) != 0)
            octets.back() |= static_cast<std::uint8_t>(0x80 >> bit % 8);
        unused = 7 - bit % 8;
        if (bit == 31)
            break;
    }
    return bitString(octets, unused);
}

DerWriter& DerWriter::text(std::uint8_t identifier, std::string_view text) {
    if (!fitsStringType(identifier, text))
        throw Asn1Exception("a character that its type of string does not have (X.680 41)");
    return value(identifier, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

DerWriter& DerWriter::setOf(std::vector<Bytes> values) {
    // The shorter of two encodings is never the beginning of the longer one, so this is the order of
    // encodings that are filled up with zeros.
    std::ranges::sort(values);
    return nest(tag::set, [&](DerWriter& set) {
        for (const Bytes& one : values)
            set.encoded(one);
    });
}

}  // namespace asn1
