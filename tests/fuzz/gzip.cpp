// Ungzips arbitrary bytes, at once and in small pieces, and gzips them.
#include "compression/gzip.h"
#include "fuzz.h"
#include "stream/memory_stream.h"

#include <algorithm>

using namespace Corvane;
using namespace Corvane::Compression;

namespace {

class SmallPieces : public Stream::MemoryStream {
public:
    using MemoryStream::read;
    std::size_t read(std::span<std::uint8_t> buffer) override {
        return MemoryStream::read(buffer.first(std::min<std::size_t>(buffer.size(), 7)));
    }
};

std::optional<Bytes> restored(Input input) {
    Bytes output;
    return errorOf([&] { ungzip(input, output); }) ? std::nullopt : std::optional(output);
}

std::optional<Bytes> restoredInPieces(Input input) {
    SmallPieces source;
    source.write(input);
    source.seek(0, Stream::Origin::beginning);
    Stream::MemoryStream output;
    const bool failed = errorOf([&] { ungzipFileAsync(source, output, nullptr); }).has_value();
    require(!failed || output.state().size == 0);
    return failed ? std::nullopt : std::optional(*output.seekAndRead(0, output.state().size));
}

}  // namespace

void fuzz(Input input) {
    require(restored(input) == restoredInPieces(input));
    Bytes packed;
    gzip(input, packed);
    require(restored(packed) == Bytes(input.begin(), input.end()));
}
