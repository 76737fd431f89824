// One run of zlib's inflate, for gzip members and entries of zip archives.
#pragma once

#include "compression/sink.h"
#include "core/errors.h"

#include <zlib.h>

#include <cstdint>
#include <span>

namespace Corvane::Compression::detail {

class Inflater {
public:
    enum class State {
        needsInput,
        finished,
        broken,  // the data is not what the format says
    };

    // `windowBits` as inflateInit2 takes them: 31 for gzip, -15 for bare deflate data. `failure`, of static
    // lifetime, is what is thrown when zlib itself fails; being out of memory is std::bad_alloc.
    Inflater(int windowBits, const ErrorDescriptor& failure);
    ~Inflater();
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    // Restores `input` into `sink` and takes off it what was used: everything, unless the data ended before
    // or is broken. Throws what the constructor and `sink` throw.
    State run(std::span<const std::uint8_t>& input, const Sink& sink);

    // Begins a new run.
    void restart();

private:
    [[noreturn]] void fail(int status) const;
    int step(std::span<const std::uint8_t>& input, const Sink& sink);

    z_stream stream_{};
    Bytes piece_;
    const ErrorDescriptor& failure_;
};

}  // namespace Corvane::Compression::detail
