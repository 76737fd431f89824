// The content of a message that is encoded from a stream.
#pragma once

#include "crypto/message/crypt_message.h"
#include "stream/binary_stream.h"
#include "stream/stream_loop.h"

#include <cstdint>
#include <functional>
#include <span>

namespace Corvane::detail {

// One byte less than a mebibyte, which messages have always been made with.
inline constexpr std::size_t messageBlockSize = 0x100000 - 1;

// Gives a message all that lies from the position of a stream to its end, and says which block is the last.
// Throws as CryptMessage::update() and forEachBlock().
void feed(CryptMessage& message, Stream::IBinaryStream& input, const SharedProgress& progress);

// The same, with a look at the first block before the message gets it; `look` may throw.
using Look = std::function<void(std::span<const std::uint8_t>)>;
void feed(CryptMessage& message, Stream::IBinaryStream& input, const SharedProgress& progress,
          const Look& look);

// What lies from the position of a stream to its end.
class MessageContent {
public:
    // Content that is padded and has much around it is announced up to this size: the system computes the
    // lengths of the whole message in 32 bits.
    static constexpr std::uint64_t largestPadded = 0xFF000000;

    // What is larger than `largest` is not announced.
    explicit MessageContent(Stream::IBinaryStream& input, std::uint64_t largest = CMSG_INDEFINITE_LENGTH);

    // What the message is told of its size: CMSG_INDEFINITE_LENGTH for 4 GiB and more.
    DWORD announcedSize() const noexcept;

    // Gives the message all of it, whose last block says so, and is shorter than the others or empty. The
    // system does not compare the sizes, so a stream that grew or shrank since it was announced ends it with
    // E_READ_OR_WRONG_FILE_SIZE. Throws as CryptMessage::update() and forEachBlock().
    void feed(CryptMessage& message, const SharedProgress& progress);

private:
    Stream::IBinaryStream& input_;
    std::uint64_t largest_;
    std::uint64_t size_;
};

}  // namespace Corvane::detail
