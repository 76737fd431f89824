// Writing of DER (X.690): values are appended from left to right.
//
//     DerWriter algorithm;
//     algorithm.sequence([](DerWriter& fields) { fields.oid("1.2.643.2.2.19").null(); });
//
// A constructed value is filled by a function that is handed the writer and adds what is inside; its length
// comes out by itself. What does not fit its type is refused with an Asn1Exception, and so is what would not
// fit in 32 bits; the writer is of no use after it. Pure, any thread.
#pragma once

#include "asn1/base/values.h"

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace asn1 {

class DerWriter {
public:
    const Bytes& bytes() const noexcept { return bytes_; }
    // What was written; the writer begins anew.
    Bytes take() noexcept { return std::exchange(bytes_, {}); }

    // Any primitive value; constructed ones whose contents are known, too.
    DerWriter& value(std::uint8_t identifier, View contents);
    // Whole values that are encoded already.
    DerWriter& encoded(View values);

    DerWriter& boolean(bool value);
    DerWriter& integer(std::int64_t number);
    DerWriter& null() { return value(tag::null, {}); }
    // From dotted text, see oidContents().
    DerWriter& oid(std::string_view dotted);
    DerWriter& octetString(View octets) { return value(tag::octetString, octets); }
    // All bits of the octets but the last `unused`, of which there are at most seven; these are written as 0.
    DerWriter& bitString(View octets, unsigned unused = 0);
    // Bits by their numbers, without zeros at the end (X.690 11.2.2): bit n is 1 << n of `bits`.
    DerWriter& namedBits(std::uint32_t bits);
    // UTF8String, PrintableString, IA5String, NumericString. UTF-8 in, and only what the type may hold.
    DerWriter& text(std::uint8_t identifier, std::string_view text);
    // SET OF: the values, each encoded, are put in the order of X.690 11.6.
    DerWriter& setOf(std::vector<Bytes> values);

    // `fill` is called with this writer.
    template <class Fill>
    DerWriter& nest(std::uint8_t identifier, Fill&& fill) {
        const std::size_t begin = bytes_.size();
        std::forward<Fill>(fill)(*this);
        return wrap(identifier, begin);
    }
    template <class Fill>
    DerWriter& sequence(Fill&& fill) {
        return nest(tag::sequence, std::forward<Fill>(fill));
    }

private:
    DerWriter& wrap(std::uint8_t identifier, std::size_t begin);

    Bytes bytes_;
};

// Whether a string type may hold the text, which is UTF-8 (X.680 41).
bool fitsStringType(std::uint8_t identifier, std::string_view text);

}  // namespace asn1
