// Reading of a message that comes in pieces: what stands before its content, the content as it comes, and the
// rest.
#pragma once

#include "message.h"

#include <vector>

namespace Corvane::Platform::Messages {

// The elements around the place that is read, the innermost last.
class Levels {
public:
    // Enters an element whose header was read.
    void enter(const Header& head);
    // So many bytes of the innermost element were read.
    void consume(std::size_t size);
    // Whether the innermost element ends here; `rest` is what follows. The marker of an indefinite end is
    // consumed by leave. Throws Truncated where that cannot be told yet.
    bool isAtEnd(View rest) const;
    // Leaves the innermost element, at its end; returns the size of its end marker.
    std::size_t leave();
    std::size_t depth() const { return levels_.size(); }
    std::uint64_t left() const { return levels_.back().left; }
    bool isConstructed() const { return levels_.back().isConstructed; }

private:
    struct Level {
        bool isIndefinite, isConstructed;
        std::uint64_t left;
    };
    std::vector<Level> levels_;
};

// A place in the bytes at hand, within Levels.
class Cursor {
public:
    Cursor(View bytes, Levels& levels) : bytes_(bytes), levels_(levels) {}

    std::size_t position() const { return at_; }
    bool isAtEnd() const { return levels_.isAtEnd(rest()); }
    bool isNext(std::uint8_t tag) const;
    Header enter();
    Header enter(std::uint8_t tag);
    // Throws BerError where there is more in the innermost element.
    void leave();
    Element next();
    View take(std::size_t size);
    View rest() const { return bytes_.subspan(at_); }

private:
    View bytes_;
    Levels& levels_;
    std::size_t at_ = 0;
};

class ContentReader {
public:
    virtual ~ContentReader() = default;
    // Throws BerError, Truncated at the end of a message that is not whole, and what the receivers throw.
    void read(View bytes, bool isFinal);
    bool isWhole() const { return phase_ == Phase::whole; }
    bool isHeadRead() const { return phase_ != Phase::head; }

protected:
    // Up to what follows the version, which says no more than what is there.
    static void enterMessage(Cursor& cursor, std::string_view type);
    // The elements of a set, or of what has another tag in its place.
    static void take(std::vector<Bytes>& all, View set);
    // Everything up to the header of the content: enters it, or leaves the cursor where it would stand and
    // returns false.
    virtual bool readHead(Cursor& cursor) = 0;
    virtual void readContent(View bytes) = 0;
    // What follows the content; stays where it is as long as the object.
    virtual void readEnd(Cursor& cursor) = 0;

private:
    enum class Phase { head, content, end, whole };
    std::size_t tryHead();
    std::size_t passContent();
    void passPiece(Cursor& cursor);

    Phase phase_ = Phase::head;
    Levels levels_;
    std::size_t outside_ = 0;  // depth around the content
    Bytes pending_;
};

}  // namespace Corvane::Platform::Messages
