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
    if (progress && progress->isCanceled()) {
        throw Exception(E_CANCELED);
    }
}

// As forEachBlock, for one of several streams that an operation works through: what it reads counts as
// further work of a progress that was started for all of them.
template <class Work>
void forEachFurtherBlock(IBinaryStream& input, std::size_t size, const SharedProgress& progress,
                         Work&& work) {
    const State state = input.state();
    // A short stream needs no big block; one that grows meanwhile is read in more of them.
    const std::uint64_t rest = std::max<std::uint64_t>(state.size - state.position, 1);
    Bytes block(static_cast<std::size_t>(std::min<std::uint64_t>(rest, size)));
    for (;;) {
        const std::size_t count = input.read(std::span(block));
        throwIfCanceled(progress);
        if (count == 0) {
            return;
        }
        work(std::span<const std::uint8_t>(block).first(count));
        if (progress) {
            progress->add(count);
        }
    }
}

// Hands what lies from the position of `input` to its end to `work`, a callable that takes a
// std::span<const std::uint8_t> of at most `size` bytes, which is gone when it returns. Holds one block in
// memory. The work is the size of the whole stream, and done is what was read. Cancellation is seen before
// each block and once more after the last. Throws E_CANCELED, what the stream throws and what `work` throws;
// the position is then behind the block last read.
template <class Work>
void forEachBlock(IBinaryStream& input, std::size_t size, const SharedProgress& progress, Work&& work) {
    if (progress) {
        progress->start(input.state().size);
    }
    forEachFurtherBlock(input, size, progress, std::forward<Work>(work));
}

}  // namespace Corvane::Stream
