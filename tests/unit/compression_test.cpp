// gzip, and zip around one piece of data: what is written, and what is read of files that other programs made
// (tests/data/zip/make.sh).
#include "compression/gzip.h"
#include "compression/zip.h"
#include "support.h"

using namespace Corvane;
using namespace Corvane::Compression;
using namespace Corvane::Test;
using namespace std::string_literals;

namespace {

using Stream::IBinaryStream;
using Stream::MemoryStream;

struct Format {
    const char* name;
    void (*pack)(std::span<const std::uint8_t>, Bytes&, int);
    void (*unpack)(std::span<const std::uint8_t>, Bytes&, unsigned);
    void (*packStream)(IBinaryStream&, IBinaryStream&, const SharedProgress&, int);
    void (*unpackStream)(IBinaryStream&, IBinaryStream&, unsigned, const SharedProgress&);
};

const Format gzipFormat{
    "gzip", gzip, [](std::span<const std::uint8_t> input, Bytes& output, unsigned) { ungzip(input, output); },
    gzipFileAsync,
    [](IBinaryStream& input, IBinaryStream& output, unsigned, const SharedProgress& progress) {
        ungzipFileAsync(input, output, progress);
    }};
const Format zipFormat{"zip", zip, unzip, zipFileAsync, unzipFileAsync};
const Format* const formats[] = {&gzipFormat, &zipFormat};

Bytes packed(const Format& format, const Bytes& input) {
    Bytes output;
    format.pack(input, output, defaultMode);
    return output;
}

Bytes unpacked(const Format& format, const Bytes& input, unsigned number = 0) {
    Bytes output;
    format.unpack(input, output, number);
    return output;
}

TEST(Compression, RestoresAnySizeInMemoryAndFromStreams) {
    for (const Format* format : formats) {
        for (const std::size_t size : {0u, 1u, 65535u, 131071u, 131072u, 131073u, 3000000u}) {
            SCOPED_TRACE(testing::Message() << format->name << ' ' << size);
            const Bytes content = sampleBytes(size);
            const Bytes whole = packed(*format, content);
            EXPECT_EQ(unpacked(*format, whole), content);

            SourceStream input(content);
            SourceStream output(sampleBytes(4000000));  // an older, longer result
            const auto progress = std::make_shared<Progress>();
            format->packStream(input, output, progress, defaultMode);
            EXPECT_EQ(contentOf(output), whole);
            EXPECT_TRUE(size == 0 || progress->fraction() == 1.0);

            MemoryStream restored;
            output.seek(0, Stream::Origin::beginning);
            format->unpackStream(output, restored, 1, progress);
            EXPECT_EQ(contentOf(restored), content);
            EXPECT_TRUE(size == 0 || progress->fraction() == 1.0);
        }
    }
}

TEST(Compression, ReadsWhatOtherProgramsPacked) {
    for (const auto& row : readTable("zip/contents.txt", 3)) {
        const Format& format = row[0].ends_with(".gz") ? gzipFormat : zipFormat;
        const Bytes input = readTestData("zip/" + row[0]);
        const auto number = static_cast<unsigned>(std::stoul(row[1]));
        std::string content = row[2];
        std::replace(content.begin(), content.end(), '$', '\n');
        EXPECT_EQ(unpacked(format, input, number), bytesOf(content)) << row[0];
        SourceStream slow(input, 1);
        MemoryStream output;
        format.unpackStream(slow, output, number, nullptr);
        EXPECT_EQ(contentOf(output), bytesOf(content)) << row[0] << ", byte by byte";
    }
}

template <class Work>
std::string errorName(Work&& work) {
    try {
        work();
    } catch (const Exception& exception) {
        return exception.what();
    }
    return "none";
}

void expectRefused(const Format& format, const Bytes& input, const std::string& error, unsigned number = 0) {
    Bytes output = bytesOf("as before");
    EXPECT_EQ(errorName([&] { format.unpack(input, output, number); }), error);
    EXPECT_EQ(output, bytesOf("as before"));
    SourceStream slow(input, 100);
    MemoryStream stream;
    stream.write(bytesOf("before"));
    EXPECT_EQ(errorName([&] { format.unpackStream(slow, stream, number, nullptr); }), error);
    EXPECT_EQ(contentOf(stream), bytesOf("before"));
}

TEST(Compression, RefusesBrokenInputAndLeavesTheOutput) {
    const auto placeOf = [](const std::string& place, std::size_t size) {
        const int number = std::stoi(place);
        return static_cast<std::size_t>(number) + (number < 0 ? size : 0);
    };
    for (const auto& row : readTable("zip/broken.txt", 6)) {
        SCOPED_TRACE(row[1] + ": " + row[0]);
        Bytes input = readTestData("zip/" + row[1]);
        if (!row[2].empty())
            input.resize(placeOf(row[2], input.size()));
        std::istringstream places(row[3]);
        for (std::string place; std::getline(places, place, ',');)
            input.at(placeOf(place, input.size())) ^= 0x10;
        expectRefused(row[1].ends_with(".gz") ? gzipFormat : zipFormat, input, row[4],
                      static_cast<unsigned>(std::stoul(row[5])));
    }
    Bytes large = packed(zipFormat, sampleBytes(1000000));
    large.at(200000) ^= 0x10;
    expectRefused(zipFormat, large, "E_UNZIP");
}

TEST(Compression, AnOperationThatStopsLeavesTheOutput) {
    const Bytes content = sampleBytes(1000000);
    MemoryStream closed;
    closed.close();
    for (const Format* format : formats) {
        SCOPED_TRACE(format->name);
        MemoryStream output;
        const auto progress = std::make_shared<Progress>();
        const auto expectStopped = [&](const ErrorDescriptor& error, bool packs, IBinaryStream& input,
                                       const std::string& left) {
            output.seekAndWrite(0, bytesOf("before, behind"));
            output.seek(6, Stream::Origin::beginning);
            EXPECT_EQ(errorCode([&] {
                          packs ? format->packStream(input, output, progress, defaultMode)
                                : format->unpackStream(input, output, 0, progress);
                      }),
                      error.code);
            EXPECT_EQ(contentOf(output), bytesOf(left));
        };
        for (const bool cancels : {false, true}) {
            SourceStream input(content, 100000, [&](std::uint64_t position) {
                if (position < 900000)
                    return;
                if (!cancels)
                    throw Exception(E_FILE_READ);
                progress->cancel();
            });
            expectStopped(cancels ? E_CANCELED : E_FILE_READ, true, input, "before");
        }
        // Nothing was written before the first block was there.
        SourceStream input(content);
        SourceStream whole(packed(*format, content));
        expectStopped(E_CANCELED, true, input, "before, behind");
        expectStopped(E_CANCELED, false, whole, "before, behind");
        EXPECT_THROW(format->packStream(closed, output, nullptr, defaultMode), Stream::ClosedStreamException);
        EXPECT_THROW(format->unpackStream(closed, output, 0, nullptr), Stream::ClosedStreamException);
        EXPECT_EQ(contentOf(output), bytesOf("before, behind"));
        EXPECT_THROW(format->packStream(input, closed, nullptr, defaultMode), Stream::ClosedStreamException);
        // One stream for both sides.
        const auto& [packError, unpackError] =
            format == &zipFormat ? std::pair(E_ZIP_OPEN, E_ZIP_OPEN) : std::pair(E_GZIP_OPEN, E_UNGZIP);
        EXPECT_EQ(errorCode([&] { format->packStream(whole, whole, nullptr, 0); }), packError.code);
        EXPECT_EQ(errorCode([&] { format->unpackStream(whole, whole, 0, nullptr); }), unpackError.code);
        EXPECT_EQ(contentOf(whole), packed(*format, content));
    }
}

}  // namespace
