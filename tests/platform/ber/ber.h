// DER for the stand-ins, by the component's own readers and writers: what comes of it OpenSSL judges.
#pragma once

#include "asn1/decoders/ber_reader.h"
#include "asn1/encoders/der_writer.h"

#include <string>
#include <string_view>
#include <vector>

namespace Corvane::Platform {

using asn1::Asn1Exception;
using asn1::BerReader;
using asn1::Bytes;
using asn1::DerWriter;
using asn1::View;
namespace Tag = asn1::tag;

// What others wrote.
struct Reader : asn1::BerReader {
    explicit Reader(View bytes) : BerReader(bytes, asn1::Rules::ber) {}
};

inline Bytes& append(Bytes& bytes, View more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
    return bytes;
}
inline Bytes bytesOf(View view) {
    return {view.begin(), view.end()};
}
inline Bytes reversed(View bytes) {
    return {bytes.rbegin(), bytes.rend()};
}

// An element with the parts one after the other as its content.
template <class... Parts>
Bytes tlv(std::uint8_t tag, const Parts&... parts) {
    Bytes content;
    (append(content, View(std::data(parts), std::size(parts))), ...);
    return DerWriter().value(tag, content).take();
}
inline Bytes oid(std::string_view text) {
    return DerWriter().oid(text).take();
}
inline Bytes integer(std::int64_t value) {
    return DerWriter().integer(value).take();
}

}  // namespace Corvane::Platform
