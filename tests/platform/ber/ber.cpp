#include "ber.h"

#include <algorithm>
#include <sstream>

namespace Corvane::Platform {
namespace {

// The bytes of a number in base 2^bits, the most significant first; all but the last with `more` set.
Bytes digitsOf(std::uint64_t number, unsigned bits, std::uint8_t more) {
    Bytes digits;
    do
        digits.push_back(
            static_cast<std::uint8_t>((number & ((1U << bits) - 1)) | (digits.empty() ? 0 : more)));
    while ((number >>= bits) > 0);
    return reversed(digits);
}

// The size of the element at the start of `bytes`, its end marker included.
std::size_t wholeSize(View bytes, const Header& head, std::size_t depth) {
    if (depth > deepest)
        throw BerError("nested too deep");
    if (!head.isIndefinite) {
        if (head.length > bytes.size() - head.size)
            throw Truncated();
        return head.size + head.length;
    }
    for (std::size_t at = head.size;;) {
        const Header inner = readHeader(bytes.subspan(at));
        if (inner.tag == 0 && inner.length == 0)
            return at + endMarkerSize;
        at += wholeSize(bytes.subspan(at), inner, depth + 1);
    }
}

}  // namespace

Header readHeader(View bytes) {
    if (bytes.size() < 2)
        throw Truncated();
    Header head{bytes[0], 2, bytes[1], false};
    if ((head.tag & 0x1F) == 0x1F)
        throw BerError("a tag of several bytes");
    if (head.length < 0x80)
        return head;
    const std::size_t count = head.length & 0x7F;
    head.isIndefinite = count == 0;
    if (count > sizeof(std::uint64_t) || (head.isIndefinite && !(head.tag & Tag::constructed)))
        throw BerError("a length of too many bytes, or an indefinite one of a primitive element");
    if (bytes.size() < head.size + count)
        throw Truncated();
    std::uint64_t length = 0;
    for (std::size_t i = 0; i < count; ++i)
        length = length << 8 | bytes[head.size++];
    if (length > SIZE_MAX)
        throw BerError("a length beyond memory");
    head.length = static_cast<std::size_t>(length);
    return head;
}

Element Reader::next() {
    const Header head = readHeader(rest_);
    const std::size_t size = wholeSize(rest_, head, 0);
    const std::size_t content = size - head.size - (head.isIndefinite ? endMarkerSize : 0);
    const Element element{head.tag, rest_.subspan(head.size, content), rest_.first(size)};
    rest_ = rest_.subspan(size);
    return element;
}

Element Reader::next(std::uint8_t tag) {
    if (!rest_.empty() && rest_[0] != tag)
        throw BerError("another tag than expected");
    return next();
}

std::string oidText(View content) {
    std::string text;
    std::uint64_t arc = 0;
    for (const std::uint8_t byte : content) {
        arc = arc << 7 | (byte & 0x7F);
        if (byte & 0x80)
            continue;
        if (text.empty()) {
            const std::uint64_t first = std::min<std::uint64_t>(arc / 40, 2);
            text = std::to_string(first);
            arc -= 40 * first;
        }
        text += '.' + std::to_string(arc);
        arc = 0;
    }
    return text;
}

Bytes header(std::uint8_t tag, std::uint64_t length) {
    Bytes bytes{tag};
    const Bytes digits = digitsOf(length, 8, 0);
    if (length >= 0x80)
        bytes.push_back(static_cast<std::uint8_t>(0x80 | digits.size()));
    return append(bytes, digits);
}

Bytes oid(std::string_view text) {
    std::istringstream arcs{std::string(text)};
    std::uint64_t first = 0;
    std::uint64_t arc = 0;
    char dot = 0;
    if (!(arcs >> first >> dot >> arc))
        throw BerError("not an object identifier");
    Bytes content = digitsOf(40 * first + arc, 7, 0x80);
    while (arcs >> dot >> arc)
        append(content, digitsOf(arc, 7, 0x80));
    return tlv(Tag::oid, content);
}

Bytes integer(std::uint8_t value) {
    return {Tag::integer, 1, value};
}

}  // namespace Corvane::Platform
