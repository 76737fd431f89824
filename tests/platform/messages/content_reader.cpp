#include "content_reader.h"

#include <algorithm>

namespace Corvane::Platform::Messages {
namespace {

constexpr std::size_t deepest = 64, markerSize = 2;

}  // namespace

void Levels::enter(const Header& head) {
    if (levels_.size() >= deepest)
        throw BerError("nested too deep");
    const bool isLimited = !levels_.empty() && !levels_.back().isIndefinite;
    if (isLimited && (head.indefinite ? 0 : head.length) > levels_.back().left)
        throw BerError("longer than what is around it");
    levels_.push_back({head.indefinite, (head.tag & Tag::constructed) != 0, head.length});
}

void Levels::consume(std::size_t size) {
    for (Level& level : levels_) {
        if (level.isIndefinite)
            continue;
        if (size > level.left)
            throw BerError("longer than what is around it");
        level.left -= size;
    }
}

bool Levels::isAtEnd(View rest) const {
    if (levels_.empty())
        return false;
    if (!levels_.back().isIndefinite)
        return levels_.back().left == 0;
    if (rest.empty() || (rest[0] == 0 && rest.size() < markerSize))
        throw Truncated();
    return rest[0] == 0 && rest[1] == 0;
}

std::size_t Levels::leave() {
    const bool hasMarker = levels_.back().isIndefinite;
    levels_.pop_back();
    if (!hasMarker)
        return 0;
    consume(markerSize);
    return markerSize;
}

bool Cursor::isNext(std::uint8_t tag) const {
    if (isAtEnd())
        return false;
    if (rest().empty())
        throw Truncated();
    return rest()[0] == tag;
}

Header Cursor::enter() {
    const Header head = readHeader(rest());
    take(head.size);
    levels_.enter(head);
    return head;
}

Header Cursor::enter(std::uint8_t tag) {
    if (!isNext(tag))
        throw BerError("another tag than expected");
    return enter();
}

void Cursor::leave() {
    if (!isAtEnd())
        throw BerError("more than belongs there");
    at_ += levels_.leave();
}

Element Cursor::next() {
    const Element element = Reader(rest()).next();
    take(element.whole.size());
    return element;
}

View Cursor::take(std::size_t size) {
    if (size > rest().size())
        throw Truncated();
    const View taken = rest().first(size);
    levels_.consume(size);
    at_ += size;
    return taken;
}

void ContentReader::enterMessage(Cursor& cursor, std::string_view type) {
    cursor.enter(Tag::sequence);
    if (oidText(cursor.next().content) != type)
        fail(CRYPT_E_INVALID_MSG_TYPE);
    cursor.enter(Tag::within(0));
    cursor.enter(Tag::sequence);
    cursor.next();
}

void ContentReader::take(std::vector<Bytes>& all, View set) {
    for (Reader reader(set); !reader.atEnd();) {
        const View one = reader.next().whole;
        all.emplace_back(one.begin(), one.end());
    }
}

std::size_t ContentReader::tryHead() {
    Levels levels;
    Cursor cursor(pending_, levels);
    const bool hasContent = readHead(cursor);
    levels_ = levels;
    outside_ = levels_.depth() - (hasContent ? 1 : 0);
    phase_ = hasContent ? Phase::content : Phase::end;
    return cursor.position();
}

// One header, one end, or what is there of one piece.
void ContentReader::passPiece(Cursor& cursor) {
    if (cursor.isAtEnd())
        return cursor.leave();
    if (cursor.rest().empty())
        throw Truncated();
    if (!levels_.isConstructed())
        return readContent(cursor.take(
            static_cast<std::size_t>(std::min<std::uint64_t>(levels_.left(), cursor.rest().size()))));
    if ((cursor.enter().tag & ~Tag::constructed) != Tag::octetString)
        throw BerError("an octet string of other things");
}

// Passes on what content is there; strings in pieces may be nested.
std::size_t ContentReader::passContent() {
    Cursor cursor(pending_, levels_);
    try {
        while (levels_.depth() > outside_)
            passPiece(cursor);
        phase_ = Phase::end;
    } catch (const Truncated&) {
        // The rest comes with the next call.
    }
    return cursor.position();
}

void ContentReader::read(View bytes, bool isFinal) {
    append(pending_, bytes);
    const auto drop = [&](std::size_t size) {
        pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(size));
    };
    try {
        if (phase_ == Phase::head)
            drop(tryHead());
        if (phase_ == Phase::content)
            drop(passContent());
    } catch (const Truncated&) {
        if (isFinal)
            throw;
        return;
    }
    if (!isFinal)
        return;
    if (phase_ != Phase::end)
        throw Truncated();
    Cursor cursor(pending_, levels_);
    readEnd(cursor);
    phase_ = Phase::whole;
}

}  // namespace Corvane::Platform::Messages
