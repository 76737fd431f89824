// The outer shape that signed and enveloped messages share: a head, content in one octet string, and an end.
// Lengths are definite where the content's is known before, else the outer elements are of indefinite length
// and the content comes in pieces.
#pragma once

#include "message.h"

#include <optional>

namespace Corvane::Platform::Messages {

class Layout {
public:
    struct Parts {
        Bytes type;               // of the message
        Bytes head;               // what stands before the inner element with the content
        Bytes innerHead;          // what stands before the content in it
        bool isImplicit = false;  // the content has the tag [0] itself
    };

    Layout(Parts parts, Sink& sink) : parts_(std::move(parts)), sink_(sink) {}

    // No content at all is written for a detached message. `endSize` is that of what follows.
    void beginDefinite(std::optional<std::uint64_t> contentSize, std::size_t endSize);
    void beginIndefinite();
    void content(View bytes);
    void end(View bytes);

private:
    Parts parts_;
    Sink& sink_;
    bool isIndefinite_ = false;
};

}  // namespace Corvane::Platform::Messages
