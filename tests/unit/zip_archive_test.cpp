// Archives of many entries: those that other programs made (tests/data/zip/make.sh), and our own.
#include "compression/zip_archive.h"

#include "compression/zip_entries_json.h"
#include "compression/zip_name.h"
#include "core/errors.h"
#include "core/exception.h"
#include "stream/memory_stream.h"
#include "stream_tools.h"
#include "test_data.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

using namespace Corvane;
using namespace Corvane::Compression;
using namespace std::string_literals;

namespace {

constexpr ZipDate date{2024, 2, 3, 4, 5, 6};

std::shared_ptr<Stream::MemoryStream> streamOf(const Bytes& bytes) {
    auto stream = std::make_shared<Stream::MemoryStream>();
    stream->write(bytes);
    return stream;
}

std::vector<std::string> namesIn(const ZipArchive& archive) {
    std::vector<std::string> names;
    for (const ZipEntry& entry : *archive.entries()) {
        names.push_back(entry.name);
    }
    return names;
}

TEST(ZipArchive, ListsWhatOtherProgramsPacked) {
    struct Row {
        const char* file;
        std::vector<std::string> names;
    };
    const std::vector<std::string> tree{"дерево/", "дерево/пусто", "дерево/zeros.bin", "дерево/папка/",
                                        "дерево/папка/привет.txt"};
    for (const Row& row : {
             Row{"info-zip.zip", tree},
             Row{"info-zip-utf8.zip", tree},
             Row{"7-zip.zip",
                 {"дерево/", "дерево/zeros.bin", "дерево/папка/", "дерево/папка/привет.txt", "дерево/пусто"}},
             Row{"python.zip", {"дерево/", "дерево/stored.txt", "deflated.txt", "zip64.txt"}},
             Row{"cp866.zip", {"Заявление.txt", "раб.txt", "Акт сверки №5.txt"}},
             Row{"cp437.zip", {"résumé.txt", "Müller.txt", "año.txt"}},
         }) {
        const ZipArchive archive(streamOf(readTestData("zip/"s + row.file)));
        EXPECT_EQ(namesIn(archive), row.names) << row.file;
        for (std::size_t i = 0; i < archive.entries()->size(); ++i) {
            EXPECT_EQ(archive.extract(i).size(), archive.entries()->at(i).size) << row.file << ' ' << i;
        }
    }
}

TEST(ZipArchive, DescribesEntriesInJson) {
    const ZipArchive archive(streamOf(readTestData("zip/python.zip")));
    const Json::Value list = entriesJson(*archive.entries());
    ASSERT_EQ(list.size(), 4u);
    EXPECT_EQ(list[0]["name"], "дерево/");
    EXPECT_EQ(list[0]["directory"], true);
    EXPECT_EQ(list[2]["index"].asUInt(), 2u);
    EXPECT_EQ(list[2]["name"], "deflated.txt");
    EXPECT_EQ(list[2]["size"].asUInt(), 900u);
    EXPECT_EQ(list[2]["packedSize"].asUInt(), 20u);
    EXPECT_EQ(list[2]["crc"].asUInt(), 0xF7A57DC1u);
    EXPECT_EQ(list[2]["date"], "2024-02-03T04:05:06");
    EXPECT_EQ(list[2]["directory"], false);
    EXPECT_EQ(list[2]["encrypted"], false);
    const ZipArchive locked(streamOf(readTestData("zip/info-zip-encrypted.zip")));
    EXPECT_EQ(entriesJson(*locked.entries())[0]["encrypted"], true);
}

TEST(ZipArchive, FindsEntriesByName) {
    const ZipArchive archive(streamOf(readTestData("zip/info-zip.zip")));
    EXPECT_EQ(archive.find("дерево/папка/привет.txt"), 4u);
    EXPECT_EQ(archive.find("дерево\\папка\\привет.txt"), 4u);
    EXPECT_EQ(archive.find("дерево/папка"), 3u);
    EXPECT_EQ(archive.extract(archive.find("дерево/папка/привет.txt")), bytesOf("Привет\n"));
    for (const char* name : {"", "привет.txt", "Дерево/", "дерево/пуст"}) {
        EXPECT_EQ(errorCode([&] { archive.find(name); }), E_ZIP_GET_ENTRY.code) << name;
    }
    EXPECT_EQ(errorCode([&] { archive.extract(5); }), E_UNZIP_OUT_OF_RANGE.code);
}

TEST(ZipArchive, GivesNoMoreThanAllowed) {
    const ZipArchive archive(streamOf(readTestData("zip/info-zip.zip")));
    Stream::MemoryStream output;
    EXPECT_EQ(errorCode([&] { archive.extract(2, 4999); }), E_BINARY_MAX_SIZE.code);
    EXPECT_EQ(errorCode([&] { archive.extract(2, output, 4999, nullptr); }), E_BINARY_MAX_SIZE.code);
    EXPECT_EQ(output.state().size, 0u);
    archive.extract(2, output, 5000, nullptr);
    EXPECT_EQ(contentOf(output), Bytes(5000));
}

TEST(ZipArchive, GrowsFromNothing) {
    const auto stream = std::make_shared<Stream::MemoryStream>();
    ZipArchive archive(stream);
    EXPECT_TRUE(archive.entries()->empty());
    archive.add("one.txt", date, bytesOf("one"));
    Stream::MemoryStream input;
    input.write(sampleBytes(300000));
    input.seek(0, Stream::Origin::beginning);
    const auto progress = std::make_shared<Progress>();
    archive.add("папка\\два.bin", date, input, progress);
    EXPECT_EQ(progress->fraction(), 1.0);
    archive.update([](ZipWriter& writer) {
        writer.addFolder("empty", date);
        writer.addFile("three.txt", date, bytesOf("three"));
    });
    const std::vector<std::string> names{"one.txt", "папка/два.bin", "empty/", "three.txt"};
    EXPECT_EQ(namesIn(archive), names);

    const ZipArchive again(stream);
    EXPECT_EQ(namesIn(again), names);
    EXPECT_EQ(again.extract(0), bytesOf("one"));
    EXPECT_EQ(again.extract(1), sampleBytes(300000));
    EXPECT_TRUE(again.entries()->at(2).directory);
    EXPECT_EQ(again.entries()->at(3).date.pack(), date.pack());
    // APPNOTE.TXT 4.4.4: bit 11 of the flags, at 6 of the local header, marks the name that is not ASCII.
    const Bytes bytes = contentOf(*stream);
    EXPECT_EQ(bytes[7], 0);
    const Bytes second = bytesOf("PK\3\4\x14\0\0\x08"s);
    EXPECT_NE(std::search(bytes.begin(), bytes.end(), second.begin(), second.end()), bytes.end());
}

TEST(ZipArchive, AddsToArchivesOfOtherPrograms) {
    for (const char* file : {"info-zip.zip", "info-zip-zip64.zip", "7-zip.zip", "python.zip"}) {
        const auto stream = streamOf(readTestData("zip/"s + file));
        ZipArchive archive(stream);
        const std::vector<std::string> before = namesIn(archive);
        archive.add("added.txt", date, bytesOf("added"));
        const ZipArchive again(stream);
        ASSERT_EQ(again.entries()->size(), before.size() + 1) << file;
        for (std::size_t i = 0; i < before.size(); ++i) {
            EXPECT_EQ(again.entries()->at(i).name, before[i]) << file;
            EXPECT_EQ(again.extract(i).size(), again.entries()->at(i).size) << file;
        }
        EXPECT_EQ(again.extract(before.size()), bytesOf("added")) << file;
    }
    const auto empty = streamOf(bytesOf("PK\5\6"s + std::string(18, '\0')));
    ZipArchive archive(empty);
    archive.add("added.txt", date, bytesOf("added"));
    EXPECT_EQ(ZipArchive(empty).extract(0), bytesOf("added"));
}

// Fails when it is read to a certain place, or written beyond a certain size.
class FailingStream : public Stream::MemoryStream {
public:
    void seekAndWrite(std::int64_t position, std::span<const std::uint8_t> bytes) override {
        if (static_cast<std::uint64_t>(position) + bytes.size() > room) {
            throw Exception(E_FILE_WRITE);
        }
        MemoryStream::seekAndWrite(position, bytes);
    }
    std::uint64_t room = ~std::uint64_t{0};
};

TEST(ZipArchive, AFailedChangeLeavesTheArchiveAsItWas) {
    const Bytes before = readTestData("zip/info-zip.zip");
    const auto stream = std::make_shared<FailingStream>();
    stream->write(before);
    ZipArchive archive(stream);
    const auto progress = std::make_shared<Progress>();
    const Bytes content = sampleBytes(1000000);
    // Room for the head of the entry, for part of its content, for all but the new directory.
    for (const std::size_t room : {before.size(), before.size() + 100000, before.size() + 330000}) {
        stream->room = room;
        EXPECT_EQ(errorCode([&] { archive.add("added", date, content); }), E_FILE_WRITE.code) << room;
        EXPECT_EQ(contentOf(*stream), before) << room;
    }
    stream->room = ~std::uint64_t{0};
    CancelingStream input(content, content.size(), progress);
    EXPECT_EQ(errorCode([&] { archive.add("added", date, input, progress); }), E_CANCELED.code);
    EXPECT_EQ(contentOf(*stream), before);
    EXPECT_EQ(errorCode([&] {
                  archive.update([&](ZipWriter& writer) {
                      writer.addFile("added", date, content);
                      throw Exception(E_FILE_READ);
                  });
              }),
              E_FILE_READ.code);
    EXPECT_EQ(contentOf(*stream), before);
    archive.add("added", date, content);
    EXPECT_EQ(ZipArchive(stream).extract(5), content);
}

TEST(ZipArchive, TakesNoNameItWouldNotGiveBack) {
    const auto stream = std::make_shared<Stream::MemoryStream>();
    ZipArchive archive(stream);
    archive.add("a/b", date, {});
    const Bytes before = contentOf(*stream);
    for (const std::string& name : {""s, "/"s, "a/b"s, "a\\b"s, "../a"s, "C:a"s, "nul"s, "a\0b"s}) {
        EXPECT_EQ(errorCode([&] { archive.add(name, date, {}); }), E_ZIP_OPEN_NEW_FILE.code) << name;
    }
    EXPECT_EQ(contentOf(*stream), before);
}

TEST(ZipArchive, RefusesWhatIsNoArchive) {
    EXPECT_EQ(errorCode([] { ZipArchive(streamOf(bytesOf("no archive, but some text"))); }), E_ZIP_OPEN.code);
    Bytes bytes = readTestData("zip/info-zip.zip");
    const Bytes mark = bytesOf("PK\1\2");
    const auto first = std::search(bytes.begin(), bytes.end(), mark.begin(), mark.end());
    const auto second = std::search(first + 1, bytes.end(), mark.begin(), mark.end());
    *second = 'X';
    EXPECT_EQ(errorCode([&] { ZipArchive(streamOf(bytes)); }), E_ZIP_NEXT_FILE.code);
}

TEST(ZipArchive, SaysThatItsStreamIsGone) {
    const auto stream = streamOf(readTestData("zip/info-zip.zip"));
    ZipArchive archive(stream);
    ZipArchive other(stream);
    archive.close();
    archive.close();
    EXPECT_EQ(errorCode([&] { archive.entries(); }), E_ZIP_ARCHIVE_STREAM_DISPOSE.code);
    EXPECT_EQ(errorCode([&] { archive.extract(0); }), E_ZIP_ARCHIVE_STREAM_DISPOSE.code);
    EXPECT_EQ(other.extract(4), bytesOf("Привет\n"));
    stream->close();
    EXPECT_EQ(errorCode([&] { other.add("a", date, {}); }), E_ZIP_ARCHIVE_STREAM_DISPOSE.code);
    EXPECT_EQ(errorCode([&] { ZipArchive{stream}; }), E_ZIP_ARCHIVE_STREAM_DISPOSE.code);
}

TEST(ZipName, IsReadAsItsArchiveSays) {
    // The name that stands for "a.txt", whose CRC-32 is C1EBF7BA by the crc32 of Python's zlib.
    const Bytes path = bytesOf("\x75\x70\x0B\0\x01\xBA\xF7\xEB\xC1"s + "имя");
    const std::string utf8 = "имя";
    struct Row {
        const char* what;
        std::string bytes;
        Bytes extra;
        std::uint16_t madeBy;
        std::uint16_t flags;
        std::string name;
    };
    for (const Row& row : {
             Row{"marked as UTF-8", utf8, {}, 20, 0x800, utf8},
             Row{"made on Unix", utf8, {}, 0x31E, 0, utf8},
             Row{"made on macOS", utf8, {}, 0x1314, 0, utf8},
             Row{"marked, but not UTF-8", "\xA8\xAC\xEF", {}, 20, 0x800, utf8},
             Row{"made on Unix, but not UTF-8", "\xA8\xAC\xEF", {}, 0x31E, 0, utf8},
             Row{"made on MS-DOS, valid UTF-8 by chance", "\xE0\xA0\xA1", {}, 20, 0, "раб"},
             Row{"Western", "r\x82sum\x82", {}, 20, 0, "résumé"},
             Row{"one letter by itself", "\xA8.txt", {}, 20, 0, "и.txt"},
             Row{"back slashes", "a\\b", {}, 20, 0, "a/b"},
             Row{"Unicode path", "a.txt", path, 20, 0, utf8},
             Row{"Unicode path of another name", "b.txt", path, 20, 0, "b.txt"},
             Row{"extra field cut off", utf8, {0x75, 0x70, 0xFF, 0xFF, 1}, 20, 0x800, utf8},
         }) {
        EXPECT_EQ(detail::decodeZipName({row.bytes, row.extra, row.madeBy, row.flags}), row.name) << row.what;
    }
}

TEST(ZipName, LeadsBelowTheFolderOrNowhere) {
    using Parts = std::vector<std::string>;
    EXPECT_EQ(detail::zipNameParts("a/b.c/d"), (Parts{"a", "b.c", "d"}));
    EXPECT_EQ(detail::zipNameParts("./a/./b/"), (Parts{"a", "b"}));
    EXPECT_EQ(detail::zipNameParts(".hidden/..a/com/com10/console.txt/nulls"),
              (Parts{".hidden", "..a", "com", "com10", "console.txt", "nulls"}));
    for (const std::string& name : {""s,          "/a"s,       "//server/share/a"s,
                                    "a//b"s,      ".."s,       "../a"s,
                                    "a/../b"s,    "a/.."s,     "..."s,
                                    "a..."s,      "C:"s,       "C:/a"s,
                                    "C:a"s,       "a:stream"s, "a::$DATA"s,
                                    "a."s,        "a./b"s,     "a "s,
                                    "a /b"s,      " "s,        "NUL"s,
                                    "nul.txt"s,   "a/CON"s,    "aux.tar.gz"s,
                                    "Prn "s,      "com1"s,     "LPT9.log"s,
                                    "COM\u00B9"s, "conin$"s,   "NUL .txt"s,
                                    "a*"s,        "a?"s,       "a|b"s,
                                    "a<b"s,       "a\"b"s,     "a\nb"s,
                                    "a\0b"s,      "a\\b"s}) {
        EXPECT_EQ(errorCode([&] { detail::zipNameParts(name); }), E_UNZIP_BAD.code) << name;
    }
}

}  // namespace
