// Speed of gzip from stream to stream beside a bare loop over zlib with the same parameters.
#include "bench/measure.h"
#include "compression/gzip.h"
#include "stream/memory_stream.h"

#include <zlib.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

using Corvane::Bytes;
using Corvane::Stream::MemoryStream;
using Corvane::Stream::Origin;

constexpr int windowBits = 31;
constexpr std::size_t blockSize = std::size_t{1} << 17;

// Words of a small vocabulary: deflate finds as much in it as in a text.
Bytes sampleText(std::size_t size) {
    const Bytes numbers = bench::randomBytes(size);
    Bytes text;
    for (std::size_t i = 0; text.size() < size; ++i) {
        const std::string word = std::to_string(numbers[i] * numbers[i] % 4093) + ' ';
        text.insert(text.end(), word.begin(), word.end());
    }
    text.resize(size);
    return text;
}

// Feeds `input` in blocks to `step`, deflate or inflate, and copies what comes out to `output`.
template <class Step>
std::size_t bareLoop(z_stream& stream, const Bytes& input, Bytes& output, Step step) {
    Bytes block(blockSize);
    std::size_t written = 0;
    int status = Z_OK;
    for (std::size_t read = 0; status == Z_OK;) {
        const std::size_t count = std::min(blockSize, input.size() - read);
        stream.next_in = const_cast<Bytef*>(input.data()) + read;
        stream.avail_in = static_cast<uInt>(count);
        read += count;
        do {
            stream.next_out = block.data();
            stream.avail_out = static_cast<uInt>(block.size());
            status = step(&stream, read == input.size() ? Z_FINISH : Z_NO_FLUSH);
            const std::size_t made = block.size() - stream.avail_out;
            std::memcpy(output.data() + written, block.data(), made);
            written += made;
            status = status == Z_BUF_ERROR ? Z_OK : status;
        } while (status == Z_OK && stream.avail_out == 0);
    }
    if (status != Z_STREAM_END) {
        std::fputs("the bare loop failed\n", stderr);
        std::exit(1);
    }
    return written;
}

std::size_t bareGzip(const Bytes& input, Bytes& output) {
    z_stream stream{};
    deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, windowBits, 9, Z_DEFAULT_STRATEGY);
    const std::size_t size = bareLoop(stream, input, output, deflate);
    deflateEnd(&stream);
    return size;
}

std::size_t bareGunzip(const Bytes& input, Bytes& output) {
    z_stream stream{};
    inflateInit2(&stream, windowBits);
    const std::size_t size = bareLoop(stream, input, output, inflate);
    inflateEnd(&stream);
    return size;
}

template <class Work>
void fromStreamToStream(MemoryStream& input, MemoryStream& output, Work work) {
    input.seek(0, Origin::beginning);
    output.seek(0, Origin::beginning);
    work(input, output);
}

}  // namespace

int main() {
    namespace Compression = Corvane::Compression;
    const Bytes text = sampleText(std::size_t{1} << 20);
    Bytes packed(text.size());
    Bytes restored(text.size() + blockSize);
    packed.resize(bareGzip(text, packed));
    Bytes scratch(text.size());

    MemoryStream plain;
    plain.write(text);
    MemoryStream zipped;
    MemoryStream output;
    const auto gzip = [&] {
        fromStreamToStream(plain, zipped,
                           [](auto& in, auto& out) { Compression::gzipFileAsync(in, out, nullptr); });
    };
    const auto gunzip = [&] {
        fromStreamToStream(zipped, output,
                           [](auto& in, auto& out) { Compression::ungzipFileAsync(in, out, nullptr); });
    };
    bench::compare("gzip stream", "zlib loop", 0.97, text.size(), gzip, [&] { bareGzip(text, scratch); });
    const bool same = zipped.state().size == packed.size();
    std::printf("%-30s %s\n", "gzip stream, size", same ? "identical to the loop's" : "DIFFERS");
    bench::compare("gunzip stream", "zlib loop", 0.95, text.size(), gunzip,
                   [&] { bareGunzip(packed, restored); });
    return same ? 0 : 1;
}
