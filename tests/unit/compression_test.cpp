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

void ungzipFirst(std::span<const std::uint8_t> input, Bytes& output, unsigned) {
    ungzip(input, output);
}

void ungzipStream(IBinaryStream& input, IBinaryStream& output, unsigned, const SharedProgress& progress) {
    ungzipFileAsync(input, output, progress);
}

const Format gzipFormat{"gzip", gzip, ungzipFirst, gzipFileAsync, ungzipStream};
const Format zipFormat{"zip", zip, unzip, zipFileAsync, unzipFileAsync};
const Format* const formats[] = {&gzipFormat, &zipFormat};

Bytes packed(const Format& format, const Bytes& input, int mode = defaultMode) {
    Bytes output;
    format.pack(input, output, mode);
    return output;
}

Bytes unpacked(const Format& format, const Bytes& input, unsigned number = 0) {
    Bytes output;
    format.unpack(input, output, number);
    return output;
}

TEST(Compression, ModesAreLevelsOfZlib) {
    const auto marks = [](const Format& format, std::size_t place) {
        std::vector<int> found;
        for (const int mode : {0, 1, 2, -1, 3})
            found.push_back(packed(format, sampleBytes(1000), mode).at(place));
        return found;
    };
    // RFC 1952, 2.3.1: XFL is 4 for the fastest and 2 for the best compression.
    EXPECT_EQ(marks(gzipFormat, 8), (std::vector<int>{4, 0, 2, 0, 0}));
    // APPNOTE.TXT 4.4.4: bits 1 and 2 of the flags.
    EXPECT_EQ(marks(zipFormat, 6), (std::vector<int>{6, 0, 2, 0, 0}));
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

// `bytes` with one bit changed, counted from the end where `place` is negative.
Bytes changed(Bytes bytes, int place) {
    bytes.at(place < 0 ? bytes.size() - static_cast<std::size_t>(-place) : static_cast<std::size_t>(place)) ^=
        0x10;
    return bytes;
}

TEST(Compression, RefusesBrokenInputAndLeavesTheOutput) {
    const Bytes members = readTestData("zip/two-members.gz");
    const Bytes good = packed(zipFormat, bytesOf("some data to be packed"));
    const int directory = -(22 + 46 + 4);  // its end, its only entry, the name in it
    const Bytes several = readTestData("zip/info-zip.zip");
    const auto directoryOf = [](const Bytes& archive) {
        return static_cast<int>(archive.at(archive.size() - 6) | archive.at(archive.size() - 5) << 8);
    };
    const struct {
        const char* what;
        const Format& format;
        Bytes input;
        const ErrorDescriptor& error;
        unsigned number = 0;
    } rows[] = {
        {"nothing", gzipFormat, {}, E_UNGZIP_BAD},
        {"half of a mark", gzipFormat, readTestData("zip/half-mark.gz"), E_UNGZIP_BAD},
        {"a mark and garbage", gzipFormat, readTestData("zip/mark-and-garbage.gz"), E_UNGZIP_BAD},
        {"second member cut off", gzipFormat, Bytes(members.begin(), members.end() - 1), E_UNGZIP_BAD},
        {"first member cut off", gzipFormat, Bytes(members.begin(), members.begin() + 20), E_UNGZIP_BAD},
        {"header cut off", gzipFormat, Bytes(members.begin(), members.begin() + 5), E_UNGZIP_BAD},
        {"another length", gzipFormat, changed(members, -1), E_UNGZIP_BAD},
        {"another checksum", gzipFormat, changed(members, -8), E_UNGZIP_BAD},
        {"other data", gzipFormat, changed(members, -12), E_UNGZIP_BAD},
        {"zlib instead of gzip", gzipFormat, {0x78, 0x9C, 0x03, 0, 0, 0, 0, 0x01}, E_UNGZIP_BAD},
        {"nothing", zipFormat, {}, E_ZIP_OPEN},
        {"without its end", zipFormat, Bytes(good.begin(), good.end() - 22), E_ZIP_OPEN},
        {"no entries", zipFormat, bytesOf("PK\5\6"s + std::string(18, '\0')), E_UNZIP_OUT_OF_RANGE},
        {"local header", zipFormat, changed(good, 0), E_UNZIP_BAD},
        {"local header's name length", zipFormat, changed(good, 26), E_UNZIP_BAD},
        {"compressed data", zipFormat, changed(good, 36), E_UNZIP},
        {"checksum", zipFormat, changed(changed(good, 14), directory + 16), E_UNZIP},
        {"size", zipFormat, changed(changed(good, 22), directory + 24), E_UNZIP},
        {"encrypted by another method", zipFormat, readTestData("zip/7-zip-aes.zip"), E_UNZIP},
        {"first entry's header", zipFormat, changed(several, directoryOf(several)), E_UNZIP},
        {"second entry behind it", zipFormat, changed(several, directoryOf(several)), E_UNZIP_OUT_OF_RANGE,
         2},
        {"late in large data", zipFormat, changed(packed(zipFormat, sampleBytes(1000000)), 200000), E_UNZIP},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.format.name + ": "s + row.what);
        Bytes output = bytesOf("as before");
        EXPECT_EQ(errorCode([&] { row.format.unpack(row.input, output, row.number); }), row.error.code);
        EXPECT_EQ(output, bytesOf("as before"));
        SourceStream slow(row.input, 100);
        MemoryStream stream;
        stream.write(bytesOf("before"));
        EXPECT_EQ(errorCode([&] { row.format.unpackStream(slow, stream, row.number, nullptr); }),
                  row.error.code);
        EXPECT_EQ(contentOf(stream), bytesOf("before"));
    }
}

// A source that stops being one behind a position: canceled by the user, or failing.
class EndingStream : public SourceStream {
public:
    EndingStream(const Bytes& bytes, std::uint64_t most, SharedProgress progress)
        : SourceStream(bytes, 100000), most_(most), progress_(std::move(progress)) {}
    using SourceStream::read;
    std::size_t read(std::span<std::uint8_t> buffer) override {
        end();
        return SourceStream::read(buffer);
    }
    // So archives are read.
    SharedBytes seekAndRead(std::int64_t position, std::size_t count) override {
        if (position < 1)
            end();
        return SourceStream::seekAndRead(position, count);
    }

private:
    void end() {
        if (state().position < most_)
            return;
        if (!progress_)
            throw Exception(E_FILE_READ);
        progress_->cancel();
    }

    std::uint64_t most_;
    SharedProgress progress_;
};

TEST(Compression, AnOperationThatStopsLeavesTheOutput) {
    const Bytes content = sampleBytes(1000000);
    for (const Format* format : formats) {
        for (const bool packs : {true, false}) {
            for (const bool cancels : {true, false}) {
                for (const std::uint64_t behind : {0u, 900000u}) {
                    if (!packs && behind != 0)
                        continue;
                    SCOPED_TRACE(testing::Message() << format->name << packs << cancels << ' ' << behind);
                    const auto progress = cancels ? std::make_shared<Progress>() : nullptr;
                    const Bytes source = packs ? content : packed(*format, content);
                    EndingStream input(source, behind, progress);
                    MemoryStream output;
                    output.write(bytesOf("before, behind"));
                    output.seek(6, Stream::Origin::beginning);
                    const auto run = [&] {
                        packs ? format->packStream(input, output, progress, defaultMode)
                              : format->unpackStream(input, output, 0, progress);
                    };
                    EXPECT_EQ(errorCode(run), cancels ? E_CANCELED.code : E_FILE_READ.code);
                    const Bytes left = contentOf(output);
                    // Nothing was written before the first block was there.
                    EXPECT_EQ(left, bytesOf(behind == 0 ? "before, behind" : "before"));
                }
            }
        }
    }
}

TEST(Compression, PassesOnWhatAStreamThrowsAndRefusesOneStreamForBoth) {
    MemoryStream closed;
    closed.close();
    for (const Format* format : formats) {
        SourceStream input(sampleBytes(1000));
        EXPECT_THROW(format->packStream(input, closed, nullptr, defaultMode), Stream::ClosedStreamException);
        MemoryStream output;
        output.write(bytesOf("before"));
        output.seek(2, Stream::Origin::beginning);
        EXPECT_THROW(format->unpackStream(closed, output, 0, nullptr), Stream::ClosedStreamException);
        EXPECT_THROW(format->packStream(closed, output, nullptr, defaultMode), Stream::ClosedStreamException);
        EXPECT_EQ(contentOf(output), bytesOf("before"));
        const bool isZip = format == &zipFormat;
        EXPECT_EQ(errorCode([&] { format->packStream(input, input, nullptr, defaultMode); }),
                  isZip ? E_ZIP_OPEN.code : E_GZIP_OPEN.code);
        EXPECT_EQ(errorCode([&] { format->unpackStream(input, input, 0, nullptr); }),
                  isZip ? E_ZIP_OPEN.code : E_UNGZIP.code);
        EXPECT_EQ(input.state().size, 1000u);
    }
}

}  // namespace
