// Files: without room, archives in them, and those above 4 GiB.
#include "compression/gzip.h"
#include "compression/zip.h"
#include "compression/zip_archive.h"
#include "compression/zip_folder.h"
#include "files/file_system.h"
#include "platform/import_patch.h"
#include "support.h"

#include <filesystem>

using namespace Corvane;
using namespace Corvane::Compression;
using namespace Corvane::Test;

namespace {

constexpr std::uint64_t fourGiB = std::uint64_t{1} << 32;

// Counts the zeros that are written and keeps nothing.
struct ZeroCounter : Stream::MemoryStream {
    Stream::State state() const override { return {zeros, zeros}; }
    void write(std::span<const std::uint8_t> bytes) override {
        zeros += static_cast<std::uint64_t>(std::ranges::count(bytes, std::uint8_t{0}));
    }
    std::uint64_t zeros = 0;
};

// Temporary files that were only made longer are sparse where the file system knows that.
TEST(Zip64, AnEntryAboveFourGiBComesBack) {
    constexpr std::uint64_t size = fourGiB + 5;
    const auto input = FileSystem::createTemporaryFile(false);
    input->resize(size);
    input->seek(0, Stream::Origin::beginning);
    const auto archive = std::make_shared<Stream::MemoryStream>();
    zipFileAsync(*input, *archive, nullptr, 0);
    const ZipArchive list(archive);
    EXPECT_EQ(list.entries()->at(0).size, size);
    EXPECT_LT(list.entries()->at(0).packedSize, fourGiB / 100);

    ZeroCounter output;
    unzipFileAsync(*archive, output, 0, nullptr);
    EXPECT_EQ(output.zeros, size);
}

TEST(Zip64, EntriesBehindFourGiBAreAddedAndFound) {
    // One stored entry of zeros (tests/data/zip/make.sh).
    const auto stream = FileSystem::createTemporaryFile(false);
    stream->write(readTestData("zip/beyond-4-gib.head"));
    stream->resize(stream->state().size + fourGiB + 1);
    stream->seekAndWrite(static_cast<std::int64_t>(stream->state().size),
                         readTestData("zip/beyond-4-gib.tail"));
    ZipArchive archive(stream);
    EXPECT_EQ(archive.entries()->at(0).size, fourGiB + 1);
    archive.add("added", {}, bytesOf("added"));
    archive.add("once more", {}, bytesOf("more"));
    const ZipArchive again(stream);
    EXPECT_EQ(again.entries()->at(0).packedSize, fourGiB + 1);
    EXPECT_EQ(again.extract(1), bytesOf("added"));
    EXPECT_EQ(again.extract(2), bytesOf("more"));
}

TEST(ZipFiles, WhatIsClosedMeanwhileIsWhatItWas) {
    const auto fails = [](const Bytes& before, const ErrorDescriptor& error, auto write) {
        const std::shared_ptr<File> file = FileSystem::createTemporaryFile(true);
        file->write(before);
        SourceStream input(sampleBytes(1000000), 100000, [&](std::uint64_t position) {
            if (position > 500000)
                file->close();
        });
        EXPECT_EQ(errorCode([&] { write(input, file); }), error.code);
        EXPECT_EQ(readFile(file->path()), before);
        FileSystem::deleteFile(file->path());
    };
    fails(readTestData("zip/info-zip.zip"), E_SEEK_IN_FILE,
          [](auto& input, const auto& file) { ZipArchive(file).add("added", {}, input, nullptr); });
    fails(bytesOf("before"), E_FILE_WRITE,
          [](auto& input, const auto& file) { gzipFileAsync(input, *file, nullptr, 0); });
}

class ZipFolders : public testing::Test {
protected:
    ~ZipFolders() override { std::filesystem::remove_all(folder_); }

    const std::wstring folder_ =
        FileSystem::temporaryFolder() + L"corvane-zip-" + std::to_wstring(::GetCurrentProcessId());
    const std::shared_ptr<Stream::MemoryStream> stream_ = std::make_shared<Stream::MemoryStream>();
    ZipArchive archive_{stream_};
};

TEST_F(ZipFolders, CancellingIsSeenWhileFoldersAreMade) {
    archive_.update([](ZipWriter& writer) { writer.addFolder("a/b/c/d", {}); });
    const auto progress = std::make_shared<Progress>();
    int made = 0;
    const auto create = ImportPatch::behind(&::CreateDirectoryW);
    const Replaced patch(&::CreateDirectoryW, [&](LPCWSTR path, LPSECURITY_ATTRIBUTES) {
        if (++made == 3)  // the target, "a", "b"
            progress->cancel();
        return create(path, nullptr);
    });
    EXPECT_EQ(errorCode([&] { extractToFolder(archive_, folder_, {}, progress); }), E_CANCELED.code);
    EXPECT_EQ(made, 3);
}

TEST_F(ZipFolders, AnArchiveThatIsClosedWhileAFolderIsAddedSaysSo) {
    FileSystem::createFolder(folder_);
    writeFile(folder_ + L"\\a", sampleBytes(1000000));
    const Replaced patch(&::ReadFile, [this](HANDLE, LPVOID, DWORD size, LPDWORD done, LPOVERLAPPED) {
        stream_->close();
        *done = size;
        return TRUE;
    });
    EXPECT_EQ(errorCode([&] { addFromDisk(archive_, folder_, "", nullptr); }),
              E_ZIP_ARCHIVE_STREAM_DISPOSE.code);
}

TEST_F(ZipFolders, AFileThatIsALinkIsNotReplaced) {
    FileSystem::createFolder(folder_);
    writeFile(folder_ + L"\\link", bytesOf("elsewhere"));
    for (const char* name : {"link", "other"})
        archive_.add(name, {}, bytesOf("new"));
    // The file is a link, in the words of Windows; Wine tells it of folders alone. All may be one.
    const auto ask = ImportPatch::behind(&::GetFileAttributesW);
    const Replaced attributes(&::GetFileAttributesW,
                              [&](LPCWSTR path) { return ask(path) | FILE_ATTRIBUTE_REPARSE_POINT; });
    const Replaced find(&::FindFirstFileW, [](LPCWSTR path, LPWIN32_FIND_DATAW data) {
        const HANDLE search =
            ::FindFirstFileExW(path, FindExInfoStandard, data, FindExSearchNameMatch, nullptr, 0);
        if (std::wstring_view(path).ends_with(L"\\link")) {
            data->dwFileAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
            data->dwReserved0 = IO_REPARSE_TAG_SYMLINK;
        }
        return search;
    });
    EXPECT_EQ(errorCode([&] { extractToFolder(archive_, folder_, {.overwrite = true}, nullptr); }),
              E_CREATE_FILE.code);
    EXPECT_EQ(readFile(folder_ + L"\\link"), bytesOf("elsewhere"));
}

TEST(FileSystem, AFolderIsDeletedWhenOthersLetGoOfItsFiles) {
    const std::wstring folder =
        FileSystem::temporaryFolder() + L"corvane-folder-" + std::to_wstring(::GetCurrentProcessId());
    for (const bool letsGo : {true, false}) {
        FileSystem::createFolder(folder);
        writeFile(folder + L"\\file", bytesOf("content"));
        auto reader = File::open(folder + L"\\file", {.share = FILE_SHARE_READ | FILE_SHARE_DELETE});
        const Replaced pause(&::Sleep, [&](DWORD) {
            if (letsGo)
                reader->close();
        });
        EXPECT_EQ(failureOf([&] { FileSystem::deleteFolder(folder, true); }),
                  letsGo ? Failure() : Failure(E_DIRECTORY_DELETE.code, ERROR_DIR_NOT_EMPTY));
        reader->close();
    }
    FileSystem::deleteFolder(folder, false);
}

TEST(File, WithoutRoomTheOldContentStays) {
    const std::wstring path = FileSystem::createTemporaryFile(true)->path();
    const Bytes old = bytesOf("the old content");
    writeFile(path, old);
    {
        // A disk that has room for so many bytes, and one that takes nothing and says that all is well.
        LONGLONG room = 20;
        const Replaced ends(&::SetEndOfFile, [&](HANDLE file) -> BOOL {
            FILE_END_OF_FILE_INFO size{};
            ::SetFilePointerEx(file, {}, &size.EndOfFile, FILE_CURRENT);
            ::SetLastError(ERROR_DISK_FULL);
            return size.EndOfFile.QuadPart <= room &&
                   ::SetFileInformationByHandle(file, FileEndOfFileInfo, &size, sizeof(size));
        });
        EXPECT_EQ(failureOf([&] { writeFile(path, Bytes(21)); }),
                  Failure(E_FILE_WRITE.code, ERROR_DISK_FULL));
        EXPECT_EQ(readFile(path), old) << "room is made sure of first";
        room = 1000;
        const Replaced writes(&::WriteFile, [](HANDLE, LPCVOID, DWORD, LPDWORD done, LPOVERLAPPED) -> BOOL {
            *done = 0;
            return TRUE;
        });
        for (const auto& each : {path, path + L"-new"}) {
            EXPECT_EQ(failureOf([&] { writeFile(each, Bytes(100)); }),
                      Failure(E_FILE_WRITE.code, ERROR_WRITE_FAULT));
        }
        EXPECT_EQ(readFile(path), old) << "the growth is taken back";
        EXPECT_FALSE(FileSystem::fileExists(path + L"-new"));
    }
    FileSystem::deleteFile(path);
}

}  // namespace
