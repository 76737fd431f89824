// The loop that every operation over a stream runs: read a block, look whether it should go on, work,
// account.
#pragma once

#include "core/errors.h"
#include "core/exception.h"
#include "core/progress.h"
#include "stream/binary_stream.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

namespace Corvane::Stream {

// Blocks in which whole streams are read unless an operation has a reason for others.
inline constexpr std::size_t blockSize = 0x100000;

// Throws Exception E_CANCELED when the operation is to stop. The log line about it is written where the
// exception arrives, which knows the operation's name.
inline void throwIfCanceled(const SharedProgress& progress) {
    if (progress && progress->isCanceled())
        throw Exception(E_CANCELED);
}

namespace detail {

// Reads until the block is full or the stream ends, whatever a single read delivers.
inline std::size_t fillBlock(IBinaryStream& input, std::span<std::uint8_t> block,
                             const SharedProgress& progress) {
    std::size_t filled = 0;
    for (std::size_t count = 1; count != 0 && filled < block.size(); filled += count) {
        count = input.read(block.subspan(filled));
        throwIfCanceled(progress);
    }
    return filled;
}

}  // namespace detail

// Reads one of several streams that an operation works through. Progress was started by the caller, for all
// of them together; otherwise as forEachBlock.
template <class Work>
void forEachFurtherBlock(IBinaryStream& input, std::size_t size, const SharedProgress& progress,
                         Work&& work) {
    const State state = input.state();
    // A short stream needs no big block: one byte more than it has, so that its only block is seen to end
    // early. A stream that grows meanwhile is read in more of them.
    const std::uint64_t enough = state.size - std::min(state.size, state.position) + 1;
    Bytes block(static_cast<std::size_t>(std::min<std::uint64_t>(enough, size)));
    for (bool last = false; !last;) {
        const std::size_t count = detail::fillBlock(input, block, progress);
        last = count < block.size();
        work(std::span<const std::uint8_t>(block).first(count), last);
        if (progress)
            progress->add(count);
    }
    throwIfCanceled(progress);
}

// Hands what lies from the position of `input` to its end to `work`(block, last), in blocks of `size` bytes.
// The last one is shorter, and empty where the others leave nothing: for a stream of exactly `size` bytes
// `work` sees one full block and then an empty last one. `block` is a std::span<const std::uint8_t> that is
// gone when `work` returns; one block is held in memory.
//
// The total of `progress` is the size of the whole stream, and what was read counts as done. Cancellation is
// seen before each block and once more after the last. Throws E_CANCELED, what the stream throws and what
// `work` throws; the position is then behind what was last read.
template <class Work>
void forEachBlock(IBinaryStream& input, std::size_t size, const SharedProgress& progress, Work&& work) {
    if (progress)
        progress->start(input.state().size);
    forEachFurtherBlock(input, size, progress, std::forward<Work>(work));
}

}  // namespace Corvane::Stream
