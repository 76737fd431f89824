#include "compression/inflater.h"

#include "core/exception.h"

#include <algorithm>
#include <limits>
#include <new>

namespace Corvane::Compression::detail {

Inflater::Inflater(int windowBits, const ErrorDescriptor& failure) : piece_(pieceSize), failure_(failure) {
    const int status = inflateInit2(&stream_, windowBits);
    if (status != Z_OK)
        fail(status);
}

Inflater::~Inflater() {
    inflateEnd(&stream_);
}

Inflater::State Inflater::run(std::span<const std::uint8_t>& input, const Sink& sink) {
    for (;;) {
        switch (const int status = step(input, sink)) {
            case Z_OK:
                break;
            case Z_STREAM_END:
                return State::finished;
            case Z_BUF_ERROR:
                return State::needsInput;
            case Z_DATA_ERROR:
            case Z_NEED_DICT:
                return State::broken;
            default:
                fail(status);
        }
    }
}

void Inflater::fail(int status) const {
    if (status == Z_MEM_ERROR)
        throw std::bad_alloc();
    throw Exception(failure_);
}

int Inflater::step(std::span<const std::uint8_t>& input, const Sink& sink) {
    const auto given =
        static_cast<uInt>(std::min<std::size_t>(input.size(), std::numeric_limits<uInt>::max()));
    stream_.next_in = const_cast<Bytef*>(input.data());  // zlib reads only
    stream_.avail_in = given;
    stream_.next_out = piece_.data();
    stream_.avail_out = static_cast<uInt>(piece_.size());
    const int status = inflate(&stream_, Z_NO_FLUSH);
    input = input.subspan(given - stream_.avail_in);
    const std::size_t made = piece_.size() - stream_.avail_out;
    if (made > 0)
        sink(std::span<const std::uint8_t>(piece_).first(made));
    return status;
}

void Inflater::restart() {
    inflateReset(&stream_);
}

}  // namespace Corvane::Compression::detail
