// Archives of one entry, and single entries of archives made by other programs (tests/data/zip/make.sh).
#include "compression/zip.h"

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

Bytes zipped(const Bytes& input, int mode = defaultMode) {
    Bytes output;
    zip(input, output, mode);
    return output;
}

Bytes unzipped(const Bytes& input, unsigned numFile = 0) {
    Bytes output;
    unzip(input, output, numFile);
    return output;
}

TEST(Zip, ArchiveHasTheOneEntryNamedFile) {
    const Bytes output = zipped(bytesOf("data"));
    ASSERT_GE(output.size(), 34u);
    // Local header (APPNOTE.TXT 4.3.7): signature, deflate at 8, CRC-32 and length of "data", its name at 30.
    EXPECT_EQ(Bytes(output.begin(), output.begin() + 4), bytesOf("PK\3\4"));
    EXPECT_EQ(output[8], 8);
    EXPECT_EQ(Bytes(output.begin() + 14, output.begin() + 18), (Bytes{0x63, 0xF3, 0xF3, 0xAD}));
    EXPECT_EQ(output[22], 4);
    EXPECT_EQ(Bytes(output.begin() + 26, output.begin() + 34), bytesOf(std::string("\4\0\0\0file", 8)));
    EXPECT_EQ(zipped(bytesOf("data")), output);
}

TEST(Zip, ModesAreLevelsOfZlib) {
    // APPNOTE.TXT 4.4.4: bits 1 and 2 of the flags at 6 tell how deflate was told to work.
    EXPECT_EQ(zipped(sampleBytes(1000), 0)[6], 6);
    EXPECT_EQ(zipped(sampleBytes(1000), 1)[6], 0);
    EXPECT_EQ(zipped(sampleBytes(1000), 2)[6], 2);
    EXPECT_EQ(zipped(sampleBytes(1000), 3), zipped(sampleBytes(1000), 1));
}

TEST(Zip, RestoresAnySize) {
    for (const std::size_t size : {0u, 1u, 65535u, 131072u, 1000000u}) {
        const Bytes archive = zipped(sampleBytes(size));
        EXPECT_EQ(unzipped(archive), sampleBytes(size)) << size;
        EXPECT_EQ(unzipped(archive, 1), sampleBytes(size)) << size;
        EXPECT_EQ(errorCode([&] { unzipped(archive, 2); }), E_UNZIP_OUT_OF_RANGE.code) << size;
    }
}

TEST(Zip, ReadsEntriesOfOtherPrograms) {
    struct Row {
        const char* file;
        unsigned number;
        const char* content;
    };
    for (const Row& row : {
             Row{"info-zip.zip", 2, ""},
             Row{"info-zip.zip", 5, "Привет\n"},
             Row{"info-zip-streamed.zip", 0, "Привет\n"},
             Row{"info-zip-zip64.zip", 1, "first member\n"},
             Row{"7-zip.zip", 4, "Привет\n"},
             Row{"python.zip", 2, "stored\n"},
             Row{"python.zip", 4, "zip64\n"},
         }) {
        const Bytes input = readTestData(std::string("zip/") + row.file);
        EXPECT_EQ(unzipped(input, row.number), bytesOf(row.content)) << row.file;

        Stream::MemoryStream archive;
        archive.write(input);
        Stream::MemoryStream output;
        unzipFileAsync(archive, output, row.number, nullptr);
        EXPECT_EQ(contentOf(output), bytesOf(row.content)) << row.file;
    }
}

TEST(Zip, ArchiveMayFollowOtherData) {
    Bytes bytes = bytesOf("#!/a/program\n");
    const Bytes archive = zipped(bytesOf("data"));
    bytes.insert(bytes.end(), archive.begin(), archive.end());
    EXPECT_EQ(unzipped(bytes), bytesOf("data"));
}

Bytes changed(Bytes bytes, std::size_t position) {
    bytes.at(position) ^= 0x10;
    return bytes;
}

TEST(Zip, RefusesBrokenArchives) {
    const Bytes good = zipped(bytesOf("some data to be packed"));
    const std::size_t directory = good.size() - 22 - 46 - 4;
    const Bytes empty = bytesOf(std::string("PK\5\6", 4) + std::string(18, '\0'));
    struct Row {
        const char* what;
        Bytes input;
        std::uint32_t code;
    };
    for (const Row& row : {
             Row{"nothing", {}, E_ZIP_OPEN.code},
             Row{"text", bytesOf("this is no archive, and long enough to be one"), E_ZIP_OPEN.code},
             Row{"cut off", Bytes(good.begin(), good.begin() + 50), E_ZIP_OPEN.code},
             Row{"without its end", Bytes(good.begin(), good.end() - 22), E_ZIP_OPEN.code},
             Row{"no entries", empty, E_UNZIP_OUT_OF_RANGE.code},
             Row{"local header", changed(good, 0), E_UNZIP_BAD.code},
             Row{"local header's name length", changed(good, 26), E_UNZIP_BAD.code},
             Row{"compressed data", changed(good, 36), E_UNZIP.code},
             Row{"checksum in the directory", changed(changed(good, 14), directory + 16), E_UNZIP.code},
             Row{"size in the directory", changed(changed(good, 22), directory + 24), E_UNZIP.code},
             Row{"encrypted", readTestData("zip/info-zip-encrypted.zip"), E_UNZIP.code},
             Row{"encrypted by another method", readTestData("zip/7-zip-aes.zip"), E_UNZIP.code},
             Row{"another compression", readTestData("zip/7-zip-bzip2.zip"), E_UNZIP_BAD.code},
         }) {
        Bytes output = bytesOf("as before");
        EXPECT_EQ(errorCode([&] { unzip(row.input, output, 0); }), row.code) << row.what;
        EXPECT_EQ(output, bytesOf("as before")) << row.what;
    }
}

TEST(Zip, TellsWhyAnEntryCannotBeUnpacked) {
    struct Row {
        const char* file;
        const wchar_t* message;
    };
    for (const Row& row : {
             Row{"info-zip-encrypted.zip", L"[102] Ошибка при распаковке ZIP (элемент архива зашифрован)"},
             Row{"7-zip-bzip2.zip",
                 L"[103] Ошибка при распаковке ZIP: неверный формат входных данных "
                 L"(метод сжатия 12 не поддерживается)"},
         }) {
        std::wstring message;
        try {
            unzipped(readTestData(std::string("zip/") + row.file));
        } catch (const Exception& exception) {
            message = fullMessage(exception);
        }
        EXPECT_EQ(message, row.message) << row.file;
    }
}

TEST(Zip, StreamsGiveTheSameArchive) {
    const Bytes content = sampleBytes(3000000);
    Stream::MemoryStream input;
    input.write(content);
    input.seek(0, Stream::Origin::beginning);
    Stream::MemoryStream packed;
    packed.write(sampleBytes(4000000));  // an older, longer result
    packed.seek(0, Stream::Origin::beginning);
    const auto progress = std::make_shared<Progress>();
    zipFileAsync(input, packed, progress);
    EXPECT_EQ(contentOf(packed), zipped(content));
    EXPECT_EQ(progress->fraction(), 1.0);

    Stream::MemoryStream restored;
    unzipFileAsync(packed, restored, 1, progress);
    EXPECT_EQ(contentOf(restored), content);
    EXPECT_EQ(progress->fraction(), 1.0);
}

TEST(Zip, AFailureLeavesNothingInTheOutput) {
    Bytes broken = zipped(sampleBytes(1000000));
    broken[broken.size() / 2] ^= 0x10;
    Stream::MemoryStream archive;
    archive.write(broken);
    Stream::MemoryStream output;
    output.write(bytesOf("before"));
    EXPECT_EQ(errorCode([&] { unzipFileAsync(archive, output, 0, nullptr); }), E_UNZIP.code);
    EXPECT_EQ(contentOf(output), bytesOf("before"));

    const auto progress = std::make_shared<Progress>();
    CancelingStream input(sampleBytes(1000000), 1000000, progress);
    EXPECT_EQ(errorCode([&] { zipFileAsync(input, output, progress); }), E_CANCELED.code);
    EXPECT_EQ(contentOf(output), bytesOf("before"));

    archive.close();
    EXPECT_THROW(unzipFileAsync(archive, output, 0, nullptr), Stream::ClosedStreamException);
    EXPECT_EQ(errorCode([&] { zipFileAsync(output, output, nullptr); }), E_ZIP_OPEN.code);
}

}  // namespace
