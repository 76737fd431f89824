// Ungzips arbitrary bytes, at once and in small pieces, and gzips them.
#include "compression/gzip.h"

#include "core/exception.h"
#include "stream/memory_stream.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

using namespace Corvane;
using namespace Corvane::Compression;

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

class SmallPieces : public Stream::MemoryStream {
public:
    using MemoryStream::read;
    std::size_t read(std::span<std::uint8_t> buffer) override {
        return MemoryStream::read(buffer.first(std::min<std::size_t>(buffer.size(), 7)));
    }
};

std::optional<Bytes> restored(std::span<const std::uint8_t> input) {
    try {
        Bytes output;
        ungzip(input, output);
        return output;
    } catch (const Exception&) {
        return std::nullopt;
    }
}

std::optional<Bytes> restoredInPieces(std::span<const std::uint8_t> input) {
    SmallPieces source;
    source.write(input);
    source.seek(0, Stream::Origin::beginning);
    Stream::MemoryStream output;
    try {
        ungzipFileAsync(source, output, nullptr);
    } catch (const Exception&) {
        require(output.state().size == 0);
        return std::nullopt;
    }
    return *output.seekAndRead(0, static_cast<std::size_t>(output.state().size));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> input(data, size);
    const std::optional<Bytes> output = restored(input);
    require(output == restoredInPieces(input));

    Bytes packed;
    gzip(input, packed);
    require(restored(packed) == Bytes(data, data + size));
    return 0;
}
