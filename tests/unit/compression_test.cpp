// gzip, zip around one piece of data, and archives of many entries: what is written, and what is read of
// files that other programs made (tests/data/zip/make.sh).
#include "compression/gzip.h"
#include "compression/zip.h"
#include "compression/zip_archive.h"
#include "compression/zip_file.h"
#include "compression/zip_name.h"
#include "compression/zip_storage.h"
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

// The content, or the error, which leaves the output as it was; the same for bytes in memory and for a stream
// that gives one at a time.
Bytes unpacked(const Format& format, const Bytes& input, const std::string& number = "0") {
    const auto index = static_cast<unsigned>(std::stoul(number));
    const Bytes before = bytesOf("before");
    Bytes output = before;
    const std::string error = errorName([&] { format.unpack(input, output, index); });
    SourceStream slow(input, 1);
    MemoryStream stream;
    stream.write(before);
    EXPECT_EQ(errorName([&] { format.unpackStream(slow, stream, index, nullptr); }), error);
    EXPECT_EQ(*stream.seekAndRead(0, before.size()), before);
    const Bytes content = *stream.seekAndRead(6, static_cast<std::size_t>(stream.state().size));
    EXPECT_EQ(output, error.empty() ? content : before);
    return error.empty() ? content : bytesOf(error + hexOf(content));
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
        }
    }
}

TEST(Compression, ReadsWhatIsWholeAndElseLeavesTheOutput) {
    const auto placeOf = [](const std::string& place, std::size_t size) {
        const int number = std::stoi(place);
        return static_cast<std::size_t>(number) + (number < 0 ? size : 0);
    };
    for (const auto& row : readTable("zip/outcomes.txt", 6)) {
        Bytes input = readTestData("zip/" + row[1]);
        if (!row[2].empty())
            input.resize(placeOf(row[2], input.size()));
        std::istringstream places(row[3]);
        for (std::string place; std::getline(places, place, ',');)
            input.at(placeOf(place, input.size())) ^= 0x10;
        std::string outcome = row[4];
        std::ranges::replace(outcome, '$', '\n');
        const Format& format = row[1].ends_with(".gz") ? gzipFormat : zipFormat;
        EXPECT_EQ(unpacked(format, input, row[5]), bytesOf(outcome)) << row[1] << ": " << row[0];
    }
    Bytes large = packed(zipFormat, sampleBytes(1000000));
    large.at(200000) ^= 0x10;
    EXPECT_EQ(unpacked(zipFormat, large), bytesOf("E_UNZIP"));
}

TEST(Compression, AnOperationThatStopsLeavesTheOutput) {
    const Bytes content = sampleBytes(1000000);
    MemoryStream closed;
    closed.close();
    for (const Format* format : formats) {
        SCOPED_TRACE(format->name);
        const Bytes whole = packed(*format, content);
        const auto expectStopped = [&](bool packs, bool cancels, std::uint64_t behind,
                                       const std::string& left) {
            MemoryStream output;
            output.write(bytesOf("before, behind"));
            output.seek(6, Stream::Origin::beginning);
            const auto progress = std::make_shared<Progress>();
            SourceStream input(packs ? content : whole, 100000, [&](std::uint64_t position) {
                if (position >= behind && !cancels)
                    throw Exception(E_FILE_READ);
                if (position >= behind)
                    progress->cancel();
            });
            if (behind == 0)
                cancels ? progress->cancel() : input.close();
            const std::uint32_t error = errorCode([&] {
                packs ? format->packStream(input, output, progress, defaultMode)
                      : format->unpackStream(input, output, 0, progress);
            });
            EXPECT_TRUE(cancels ? error == E_CANCELED.code : error != 0) << error;
            EXPECT_EQ(contentOf(output), bytesOf(left));
        };
        for (const bool cancels : {false, true}) {
            expectStopped(true, cancels, 900000, "before");
            // Nothing was written before the first block was there.
            expectStopped(true, cancels, 0, "before, behind");
            expectStopped(false, cancels, 0, "before, behind");
        }
        SourceStream both(whole);
        EXPECT_THROW(format->packStream(both, closed, nullptr, defaultMode), Stream::ClosedStreamException);
        const auto& [packError, unpackError] =
            format == &zipFormat ? std::pair(E_ZIP_OPEN, E_ZIP_OPEN) : std::pair(E_GZIP_OPEN, E_UNGZIP);
        EXPECT_EQ(errorCode([&] { format->packStream(both, both, nullptr, 0); }), packError.code);
        EXPECT_EQ(errorCode([&] { format->unpackStream(both, both, 0, nullptr); }), unpackError.code);
        EXPECT_EQ(contentOf(both), whole);
    }
}

using Names = std::vector<std::string>;

constexpr ZipDate date{2024, 2, 3, 4, 5, 6};

std::shared_ptr<MemoryStream> streamOf(const Bytes& bytes) {
    return std::make_shared<SourceStream>(bytes);
}

// What the entries are called, each with a bar behind it; each must also come out as long as the directory
// says.
std::string namesIn(const ZipArchive& archive) {
    std::string names;
    std::size_t index = 0;
    for (const ZipEntry& entry : *archive.entries()) {
        EXPECT_EQ(archive.extract(index++).size(), entry.size) << entry.name;
        names += entry.name + '|';
    }
    return names;
}

void expectListedAndGrown(const Bytes& bytes, const std::string& names) {
    const auto stream = streamOf(bytes);
    ZipArchive archive(stream);
    EXPECT_EQ(namesIn(archive), names);
    archive.add("added.txt", date, bytesOf("added"));
    const ZipArchive again(stream);
    EXPECT_EQ(namesIn(again), names + "added.txt|");
    EXPECT_EQ(again.extract(again.entries()->size() - 1), bytesOf("added"));
}

TEST(ZipArchive, ListsAndGrowsWhatOtherProgramsPacked) {
    const Bytes nothing = readTestData("zip/empty.zip");
    for (const auto& row : readTable("zip/names.txt", 2)) {
        SCOPED_TRACE(row[0]);
        Bytes archive = readTestData("zip/" + row[0]);
        expectListedAndGrown(archive, row[1]);
        archive.insert(archive.begin(), nothing.begin(), nothing.end());
        expectListedAndGrown(archive, row[1]);
    }
    // Old programs count in 16 bits: 65,536 entries are 0 and 65,539 are 3.
    for (const std::uint8_t counted : std::initializer_list<std::uint8_t>{0, 1, 4}) {
        Bytes archive = readTestData("zip/python.zip");
        const std::string names = namesIn(ZipArchive(streamOf(archive)));
        archive.at(archive.size() - 22 + 8) = counted;
        archive.at(archive.size() - 22 + 10) = counted;
        expectListedAndGrown(archive, names);
    }
}

TEST(ZipArchive, TwoThatGrowOneStreamTakeInEachOther) {
    const auto stream = std::make_shared<MemoryStream>();
    ZipArchive one(stream);
    ZipArchive other(stream);
    one.add("a", date, bytesOf("a"));
    other.add("b", date, bytesOf("b"));
    one.add("c", date, bytesOf("c"));
    EXPECT_EQ(errorCode([&] { other.add("C", date, {}); }), E_ZIP_OPEN_NEW_FILE.code);
    EXPECT_EQ(namesIn(one), "a|b|c|");
    EXPECT_EQ(namesIn(ZipArchive(stream)), "a|b|c|");
}

// Does something before each writing, with what is written and where it will end.
class NoticingStream : public MemoryStream {
public:
    using MemoryStream::write;
    void write(std::span<const std::uint8_t> bytes) override { MemoryStream::write(noticed(0, bytes)); }
    void seekAndWrite(std::int64_t position, std::span<const std::uint8_t> bytes) override {
        MemoryStream::seekAndWrite(position, noticed(static_cast<std::uint64_t>(position), bytes));
    }
    std::function<void(Bytes&, std::uint64_t)> notice = [](Bytes&, std::uint64_t) {};

private:
    Bytes noticed(std::uint64_t position, std::span<const std::uint8_t> bytes) const {
        Bytes copy(bytes.begin(), bytes.end());
        notice(copy, position + copy.size());
        return copy;
    }
};

TEST(ZipArchive, WhatIsNotFoundAfterwardsWasNotAdded) {
    const auto stream = std::make_shared<NoticingStream>();
    ZipArchive archive(stream);
    archive.add("kept", date, bytesOf("content"));
    const Bytes before = contentOf(*stream);
    // Another name comes to lie in the archive than the one that is given.
    stream->notice = [](Bytes& bytes, std::uint64_t) {
        const Bytes name = bytesOf("added");
        const auto found = std::search(bytes.begin(), bytes.end(), name.begin(), name.end());
        if (found != bytes.end())
            *found = 'o';
    };
    EXPECT_EQ(errorCode([&] { archive.add("added", date, {}); }), E_ZIP.code);
    EXPECT_EQ(contentOf(*stream), before);
    EXPECT_EQ(namesIn(archive), "kept|");
}

TEST(ZipArchive, AFailedChangeLeavesTheArchiveAsItWas) {
    const Bytes before = readTestData("zip/info-zip.zip");
    const auto stream = std::make_shared<NoticingStream>();
    stream->write(before);
    ZipArchive archive(stream);
    std::uint64_t most = 0;
    stream->notice = [&](const Bytes&, std::uint64_t end) {
        if (end > most)
            throw Exception(E_FILE_WRITE);
    };
    const Bytes content = sampleBytes(1000000);
    // Room for the head of the entry, for part of its content, for all but the new directory.
    for (const std::size_t room : {before.size(), before.size() + 100000, before.size() + 330000}) {
        most = room;
        EXPECT_EQ(errorCode([&] { archive.add("added", date, content); }), E_FILE_WRITE.code) << room;
        EXPECT_EQ(contentOf(*stream), before) << room;
    }
    most = ~std::uint64_t{0};
    const auto progress = std::make_shared<Progress>();
    SourceStream input(content, content.size(), [&](std::uint64_t position) {
        if (position == content.size())
            progress->cancel();
    });
    EXPECT_EQ(errorCode([&] { archive.add("added", date, input, progress); }), E_CANCELED.code);
    EXPECT_EQ(contentOf(*stream), before);
    archive.add("added", date, content);
    EXPECT_EQ(ZipArchive(stream).extract(5), content);
}

TEST(ZipArchive, AnExtractionOutlivesClosing) {
    const auto packed = std::make_shared<MemoryStream>();
    ZipArchive(packed).add("a", date, sampleBytes(1000000));
    ZipArchive archive(streamOf(contentOf(*packed)));
    NoticingStream output;
    output.notice = [&](Bytes&, std::uint64_t) { archive.close(); };
    archive.extract(0, output, unlimitedSize, nullptr);
    EXPECT_EQ(contentOf(output), sampleBytes(1000000));
    EXPECT_EQ(errorCode([&] { archive.extract(0); }), E_ZIP_ARCHIVE_STREAM_DISPOSE.code);
}

// An archive of empty entries of these names, as any program might write it.
Bytes archiveOf(const Names& names) {
    Bytes bytes;
    auto archive = detail::ZipFile::open(detail::bytesStorage(bytes));
    for (const std::string& name : names) {
        archive.openEntry({name, date}, E_ZIP);
        archive.closeEntry();
    }
    bytes.resize(static_cast<std::size_t>(archive.close().size));
    return bytes;
}

TEST(ZipArchive, AddsOnlyWhatCanBeExtractedBesideTheRest) {
    for (const auto& row : readTable("zip/added_names.txt", 3)) {
        Names present;
        std::istringstream names(row[0]);
        for (std::string name; std::getline(names, name, '|');)
            present.push_back(name);
        const auto stream = streamOf(archiveOf(present));
        ZipArchive archive(stream);
        ASSERT_EQ(namesIn(archive), row[0]);
        // With content, so that none of them is for a folder alone.
        EXPECT_EQ(errorCode([&] { archive.add(row[1], date, bytesOf("added")); }),
                  row[2].empty() ? E_ZIP_OPEN_NEW_FILE.code : 0)
            << row[0] << " and " << row[1];
        EXPECT_EQ(namesIn(ZipArchive(stream)), row[2].empty() ? row[0] : row[0] + row[2] + '|');
    }
}

TEST(ZipArchive, ABrokenDirectoryIsNotCutShort) {
    std::string bytes = readTestText("zip/info-zip.zip");
    bytes[bytes.find("PK\1\2", bytes.find("PK\1\2") + 1)] = 'X';  // the directory's second entry
    EXPECT_EQ(errorCode([&] { ZipArchive(streamOf(bytesOf(bytes))); }), E_ZIP_NEXT_FILE.code);
}

TEST(ZipName, IsReadAsItsArchiveSays) {
    for (const auto& row : readTable("zip/name_forms.txt", 6)) {
        const Bytes bytes = hexToBin(row[1]);
        const std::string name(bytes.begin(), bytes.end());
        const Bytes extra = hexToBin(row[2]);
        const auto number = [](const std::string& text) {
            return static_cast<std::uint16_t>(std::stoul(text, nullptr, 16));
        };
        EXPECT_EQ(detail::decodeZipName({name, extra, number(row[3]), number(row[4])}), row[5]) << row[0];
    }
}

TEST(ZipName, LeadsBelowTheFolderOrNowhere) {
    EXPECT_EQ(detail::zipNameParts("./a/./b.c/"), (Names{"a", "b.c"}));
    EXPECT_EQ(detail::zipNameParts(".hidden/..a/com/com10/console.txt/nulls"),
              (Names{".hidden", "..a", "com", "com10", "console.txt", "nulls"}));
    Names unsafe{"a\nb", "a\0b"s, "\xFF"};
    for (const auto& row : readTable("zip/unsafe_names.txt", 1))
        unsafe.push_back(row[0].substr(1, row[0].size() - 2));
    for (const std::string& name : unsafe)
        EXPECT_EQ(detail::zipNameParts(name), std::nullopt) << name;
}

}  // namespace
