#include "ber.h"

#include <algorithm>
#include <charconv>

namespace Corvane::Platform {
namespace {

constexpr int deepest = 64;
constexpr std::size_t endMarker = 2;

// The size of the element at the start of `bytes`, its end marker included.
std::size_t wholeSize(View bytes, const Header& head, int depth) {
    if (depth > deepest)
        throw BerError("nested too deep");
    if (!head.indefinite) {
        if (head.length > bytes.size() - head.size)
            throw Truncated();
        return head.size + head.length;
    }
    std::size_t at = head.size;
    for (;;) {
        const Header inner = readHeader(bytes.subspan(at));
        if (inner.tag == 0 && inner.length == 0)
            return at + endMarker;
        at += wholeSize(bytes.subspan(at), inner, depth + 1);
    }
}

void appendOctets(Bytes& out, const Element& element, int depth) {
    if (!(element.tag & Tag::constructed)) {
        append(out, element.content);
        return;
    }
    if (depth > deepest)
        throw BerError("nested too deep");
    for (Reader pieces(element.content); !pieces.atEnd();) {
        const Element piece = pieces.next();
        if ((piece.tag & ~Tag::constructed) != Tag::octetString)
            throw BerError("an octet string of other things");
        appendOctets(out, piece, depth + 1);
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
    head.length = 0;
    if (count == 0) {
        if (!(head.tag & Tag::constructed))
            throw BerError("a primitive element of indefinite length");
        head.indefinite = true;
        return head;
    }
    if (count > sizeof(std::uint64_t))
        throw BerError("a length of too many bytes");
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
    const std::size_t content = size - head.size - (head.indefinite ? endMarker : 0);
    const Element element{head.tag, rest_.subspan(head.size, content), rest_.first(size)};
    rest_ = rest_.subspan(size);
    return element;
}

Element Reader::next(std::uint8_t tag) {
    if (!rest_.empty() && rest_[0] != tag)
        throw BerError("another tag than expected");
    return next();
}

Bytes octets(const Element& element) {
    Bytes out;
    appendOctets(out, element, 0);
    return out;
}

Bytes toDer(const Element& element) {
    if (element.tag == (Tag::octetString | Tag::constructed))
        return tlv(Tag::octetString, octets(element));
    if (!(element.tag & Tag::constructed))
        return tlv(element.tag, element.content);
    Bytes content;
    for (Reader reader(element.content); !reader.atEnd();)
        append(content, toDer(reader.next()));
    return tlv(element.tag, content);
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
            text = std::to_string(first) + '.' + std::to_string(arc - 40 * first);
        } else {
            text += '.' + std::to_string(arc);
        }
        arc = 0;
    }
    return text;
}

Bytes header(std::uint8_t tag, std::uint64_t length) {
    Bytes bytes{tag};
    if (length < 0x80) {
        bytes.push_back(static_cast<std::uint8_t>(length));
        return bytes;
    }
    Bytes digits;
    for (std::uint64_t left = length; left > 0; left >>= 8)
        digits.push_back(static_cast<std::uint8_t>(left));
    bytes.push_back(static_cast<std::uint8_t>(0x80 | digits.size()));
    bytes.insert(bytes.end(), digits.rbegin(), digits.rend());
    return bytes;
}

Bytes oid(std::string_view text) {
    std::vector<std::uint64_t> arcs;
    for (const char *at = text.data(), *end = at + text.size(); at < end; ++at) {
        std::uint64_t arc = 0;
        const auto [stop, error] = std::from_chars(at, end, arc);
        if (error != std::errc())
            throw BerError("not an object identifier");
        arcs.push_back(arc);
        at = stop;
    }
    if (arcs.size() < 2)
        throw BerError("not an object identifier");
    arcs[1] += 40 * arcs[0];
    Bytes content;
    for (auto arc = arcs.begin() + 1; arc != arcs.end(); ++arc) {
        Bytes digits{static_cast<std::uint8_t>(*arc & 0x7F)};
        for (std::uint64_t left = *arc >> 7; left > 0; left >>= 7)
            digits.push_back(static_cast<std::uint8_t>(0x80 | (left & 0x7F)));
        content.insert(content.end(), digits.rbegin(), digits.rend());
    }
    return tlv(Tag::oid, content);
}

Bytes integer(std::uint64_t value) {
    Bytes digits;
    do
        digits.push_back(static_cast<std::uint8_t>(value));
    while ((value >>= 8) > 0);
    if (digits.back() & 0x80)
        digits.push_back(0);
    return tlv(Tag::integer, reversed(digits));
}

}  // namespace Corvane::Platform
