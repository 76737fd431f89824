// gzip against archives made by the gzip program, and what it says about broken ones
// (tests/data/zip/make.sh).
#include "compression/gzip.h"

#include "core/errors.h"
#include "core/exception.h"
#include "stream/memory_stream.h"
#include "stream_tools.h"
#include "test_data.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace Corvane;
using namespace Corvane::Compression;

namespace {

Bytes gzipped(const Bytes& input, int mode = defaultMode) {
    Bytes output;
    gzip(input, output, mode);
    return output;
}

Bytes ungzipped(const Bytes& input) {
    Bytes output;
    ungzip(input, output);
    return output;
}

TEST(Gzip, HeaderIsThePlainestOfRfc1952) {
    const Bytes output = gzipped(bytesOf("data"));
    ASSERT_GE(output.size(), 18u);
    // Magic, deflate, no flags, no time; then what deflate says of itself and the system.
    EXPECT_EQ(Bytes(output.begin(), output.begin() + 8), (Bytes{0x1F, 0x8B, 8, 0, 0, 0, 0, 0}));
    // CRC-32 of "data" and its length, both little-endian.
    EXPECT_EQ(Bytes(output.end() - 8, output.end()), (Bytes{0x63, 0xF3, 0xF3, 0xAD, 4, 0, 0, 0}));
}

TEST(Gzip, ModesAreLevelsOfZlib) {
    // RFC 1952, 2.3.1: XFL is 4 for the fastest and 2 for the best compression.
    EXPECT_EQ(gzipped(sampleBytes(1000), 0)[8], 4);
    EXPECT_EQ(gzipped(sampleBytes(1000), 1)[8], 0);
    EXPECT_EQ(gzipped(sampleBytes(1000), 2)[8], 2);
    EXPECT_EQ(gzipped(sampleBytes(1000), 7), gzipped(sampleBytes(1000), 1));
    EXPECT_EQ(gzipped(sampleBytes(1000), -1), gzipped(sampleBytes(1000), 1));
}

TEST(Gzip, RestoresAnySize) {
    for (const std::size_t size : {0u, 1u, 131071u, 131072u, 131073u, 1000000u}) {
        EXPECT_EQ(ungzipped(gzipped(sampleBytes(size))), sampleBytes(size)) << size;
    }
}

TEST(Gzip, ReadsWhatTheGzipProgramReads) {
    struct Row {
        const char* file;
        const char* content;
    };
    for (const Row& row : {
             Row{"two-members.gz", "first member\nsecond member\n"},
             Row{"garbage.gz", "first member\n"},
             Row{"zeros.gz", "first member\n"},
             Row{"named.gz", "first member\n"},
         }) {
        const Bytes input = readTestData(std::string("zip/") + row.file);
        EXPECT_EQ(ungzipped(input), bytesOf(row.content)) << row.file;

        OneByteStream slow(input);
        Stream::MemoryStream output;
        ungzipFileAsync(slow, output, nullptr);
        EXPECT_EQ(contentOf(output), bytesOf(row.content)) << row.file << ", byte by byte";
    }
}

TEST(Gzip, RefusesWhatTheGzipProgramRefuses) {
    const Bytes good = readTestData("zip/two-members.gz");
    const auto changed = [&](std::size_t fromEnd) {
        Bytes bytes = good;
        bytes[bytes.size() - fromEnd] ^= 1;
        return bytes;
    };
    struct Row {
        const char* what;
        Bytes input;
    };
    for (const Row& row : {
             Row{"nothing", {}},
             Row{"text", bytesOf("first member\n")},
             Row{"half of a mark", readTestData("zip/half-mark.gz")},
             Row{"a mark and garbage", readTestData("zip/mark-and-garbage.gz")},
             Row{"the second member cut off", Bytes(good.begin(), good.end() - 1)},
             Row{"the first member cut off", Bytes(good.begin(), good.begin() + 20)},
             Row{"the header cut off", Bytes(good.begin(), good.begin() + 5)},
             Row{"another length", changed(1)},
             Row{"another checksum", changed(8)},
             Row{"other data", changed(12)},
             Row{"zlib instead of gzip", {0x78, 0x9C, 0x03, 0x00, 0x00, 0x00, 0x00, 0x01}},
         }) {
        Bytes output = bytesOf("as before");
        EXPECT_EQ(errorCode([&] { ungzip(row.input, output); }), E_UNGZIP_BAD.code) << row.what;
        EXPECT_EQ(output, bytesOf("as before")) << row.what;

        OneByteStream slow(row.input);
        Stream::MemoryStream stream;
        stream.write(bytesOf("before"));
        EXPECT_EQ(errorCode([&] { ungzipFileAsync(slow, stream, nullptr); }), E_UNGZIP_BAD.code) << row.what;
        EXPECT_EQ(contentOf(stream), bytesOf("before")) << row.what;
    }
}

TEST(Gzip, StreamsGiveTheSameBytes) {
    const Bytes content = sampleBytes(3000000);
    Stream::MemoryStream input;
    input.write(content);
    input.seek(0, Stream::Origin::beginning);
    Stream::MemoryStream packed;
    packed.write(sampleBytes(4000000));  // an older, longer result
    packed.seek(0, Stream::Origin::beginning);
    const auto progress = std::make_shared<Progress>();
    gzipFileAsync(input, packed, progress);
    EXPECT_EQ(contentOf(packed), gzipped(content));
    EXPECT_EQ(progress->fraction(), 1.0);

    Stream::MemoryStream restored;
    packed.seek(0, Stream::Origin::beginning);
    ungzipFileAsync(packed, restored, progress);
    EXPECT_EQ(contentOf(restored), content);
    EXPECT_EQ(progress->fraction(), 1.0);
}

TEST(Gzip, StopsWhenCanceled) {
    for (const std::uint64_t behind : {std::uint64_t{0}, std::uint64_t{500000}, std::uint64_t{1000000}}) {
        const auto progress = std::make_shared<Progress>();
        CancelingStream input(sampleBytes(1000000), behind, progress);
        Stream::MemoryStream output;
        EXPECT_EQ(errorCode([&] { gzipFileAsync(input, output, progress); }), E_CANCELED.code) << behind;
        EXPECT_EQ(output.state().size, 0u) << behind;
    }
}

TEST(Gzip, PassesOnWhatAStreamThrows) {
    Stream::MemoryStream input;
    input.write(sampleBytes(1000));
    input.seek(0, Stream::Origin::beginning);
    Stream::MemoryStream closed;
    closed.close();
    EXPECT_THROW(gzipFileAsync(input, closed, nullptr), Stream::ClosedStreamException);
    Stream::MemoryStream output;
    EXPECT_THROW(ungzipFileAsync(closed, output, nullptr), Stream::ClosedStreamException);
    EXPECT_EQ(errorCode([&] { gzipFileAsync(input, input, nullptr); }), E_GZIP_OPEN.code);
    EXPECT_EQ(errorCode([&] { ungzipFileAsync(input, input, nullptr); }), E_UNGZIP.code);
    EXPECT_EQ(input.state().size, 1000u);
}

}  // namespace
