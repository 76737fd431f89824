#include "crypto/message/message_feed.h"

#include <algorithm>
#include <utility>

namespace Corvane::detail {

void feed(CryptMessage& message, Stream::IBinaryStream& input, const SharedProgress& progress) {
    feed(message, input, progress, [](auto) {});
}

void feed(CryptMessage& message, Stream::IBinaryStream& input, const SharedProgress& progress,
          const Look& look) {
    bool isFirst = true;
    Stream::forEachBlock(input, messageBlockSize, progress,
                         [&](std::span<const std::uint8_t> block, bool last) {
                             if (std::exchange(isFirst, false))
                                 look(block);
                             message.update(block, last);
                         });
}

MessageContent::MessageContent(Stream::IBinaryStream& input, std::uint64_t largest)
    : input_(input), largest_(largest) {
    const Stream::State state = input.state();
    size_ = state.size - std::min(state.size, state.position);
}

DWORD MessageContent::announcedSize() const noexcept {
    return size_ > largest_ ? CMSG_INDEFINITE_LENGTH : static_cast<DWORD>(size_);
}

void MessageContent::feed(CryptMessage& message, const SharedProgress& progress) {
    std::uint64_t left = size_;
    const bool isBound = announcedSize() != CMSG_INDEFINITE_LENGTH;
    Stream::forEachBlock(input_, messageBlockSize, progress,
                         [&](std::span<const std::uint8_t> block, bool last) {
                             if (isBound && (block.size() > left || (last && block.size() != left)))
                                 throw Exception(E_READ_OR_WRONG_FILE_SIZE);
                             left -= std::min<std::uint64_t>(left, block.size());
                             message.update(block, last);
                         });
}

}  // namespace Corvane::detail
