#include "layout.h"

namespace Corvane::Platform::Messages {
namespace {

constexpr std::uint8_t indefinite = 0x80;

std::uint64_t sizeWithHeader(std::uint64_t length) {
    return header(Tag::sequence, length).size() + length;
}

}  // namespace

void Layout::beginDefinite(std::optional<std::uint64_t> contentSize, std::size_t endSize) {
    std::uint64_t innerSize = parts_.innerHead.size();
    std::uint64_t stringSize = 0;
    if (contentSize) {
        stringSize = sizeWithHeader(*contentSize);
        innerSize += parts_.isImplicit ? stringSize : sizeWithHeader(stringSize);
    }
    const std::uint64_t bodySize = parts_.head.size() + sizeWithHeader(innerSize) + endSize;
    Bytes start = header(Tag::sequence, parts_.type.size() + sizeWithHeader(sizeWithHeader(bodySize)));
    append(start, parts_.type);
    append(start, header(Tag::within(0), sizeWithHeader(bodySize)));
    append(start, header(Tag::sequence, bodySize));
    append(start, parts_.head);
    append(start, header(Tag::sequence, innerSize));
    append(start, parts_.innerHead);
    if (contentSize) {
        if (!parts_.isImplicit)
            append(start, header(Tag::within(0), stringSize));
        append(start, header(parts_.isImplicit ? Tag::context(0) : Tag::octetString, *contentSize));
    }
    sink_.put(start);
}

void Layout::beginIndefinite() {
    isIndefinite_ = true;
    Bytes start{Tag::sequence, indefinite};
    append(start, parts_.type);
    append(start, Bytes{Tag::within(0), indefinite, Tag::sequence, indefinite});
    append(start, parts_.head);
    append(start, Bytes{Tag::sequence, indefinite});
    append(start, parts_.innerHead);
    append(start, Bytes{Tag::within(0), indefinite});
    if (!parts_.isImplicit)
        append(start, Bytes{Tag::octetString | Tag::constructed, indefinite});
    sink_.put(start);
}

void Layout::content(View bytes) {
    if (isIndefinite_ && !bytes.empty())
        sink_.put(header(Tag::octetString, bytes.size()));
    sink_.put(bytes);
}

void Layout::end(View bytes) {
    Bytes rest;
    if (isIndefinite_)
        rest.resize(parts_.isImplicit ? 4 : 6);  // ends of the string, of [0] around it, of the inner element
    append(rest, bytes);
    if (isIndefinite_)
        rest.resize(rest.size() + 6);
    sink_.put(rest, true);
}

}  // namespace Corvane::Platform::Messages
