// Reading of BER and writing of DER (X.690) for the stand-ins: their own, so that no mistake of the
// component's readers is repeated here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Corvane::Platform {

using Bytes = std::vector<std::uint8_t>;
using View = std::span<const std::uint8_t>;

namespace Tag {
constexpr std::uint8_t integer = 0x02, bitString = 0x03, octetString = 0x04, null = 0x05, oid = 0x06,
                       sequence = 0x30, set = 0x31, constructed = 0x20;
// A context-specific tag: primitive, and constructed.
constexpr std::uint8_t context(unsigned number) {
    return static_cast<std::uint8_t>(0x80 | number);
}
constexpr std::uint8_t within(unsigned number) {
    return static_cast<std::uint8_t>(0xA0 | number);
}
}  // namespace Tag

struct BerError : std::runtime_error {
    using runtime_error::runtime_error;
};
// The bytes end before the element does.
struct Truncated : BerError {
    Truncated() : BerError("truncated") {}
};

struct Header {
    std::uint8_t tag = 0;
    std::size_t size = 0;    // of tag and length
    std::size_t length = 0;  // of the content, unless indefinite
    bool isIndefinite = false;
};
// Throws Truncated, or BerError for what the stand-ins do not read (tags above 30, lengths of more than eight
// bytes).
Header readHeader(View bytes);

struct Element {
    std::uint8_t tag = 0;
    View content;  // without the end marker of an indefinite length
    View whole;
};
constexpr std::size_t deepest = 64, endMarkerSize = 2;

// A cursor over bytes that it does not own; an element's content is read by another one.
class Reader {
public:
    explicit Reader(View bytes) : rest_(bytes) {}

    bool atEnd() const { return rest_.empty(); }
    bool isNext(std::uint8_t tag) const { return !rest_.empty() && rest_[0] == tag; }
    View rest() const { return rest_; }
    Element next();
    // Throws BerError for any other tag.
    Element next(std::uint8_t tag);
    Reader enter(std::uint8_t tag) { return Reader(next(tag).content); }

private:
    View rest_;
};

std::string oidText(View content);

Bytes header(std::uint8_t tag, std::uint64_t length);
Bytes oid(std::string_view text);
Bytes integer(std::uint8_t value);  // up to 127

inline Bytes& append(Bytes& bytes, View more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
    return bytes;
}

// An element with the parts one after the other as its content.
template <class... Parts>
Bytes tlv(std::uint8_t tag, const Parts&... parts) {
    Bytes bytes = header(tag, (std::size_t{0} + ... + std::size(parts)));
    (append(bytes, View(std::data(parts), std::size(parts))), ...);
    return bytes;
}

inline Bytes bytesOf(View view) {
    return {view.begin(), view.end()};
}
inline Bytes reversed(View bytes) {
    return {bytes.rbegin(), bytes.rend()};
}

}  // namespace Corvane::Platform
