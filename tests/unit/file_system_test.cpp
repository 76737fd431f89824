#include "stream/file_system.h"

#include "support.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

constexpr FileMode writing{GENERIC_READ | GENERIC_WRITE, 0, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL};

// A folder of one test, deleted with it.
class FileTest : public testing::Test {
protected:
    void SetUp() override { FileSystem::createFolder(folder_); }
    void TearDown() override { FileSystem::deleteFolder(folder_, true); }

    std::wstring path(const std::wstring& name) const { return folder_ + L'\\' + name; }

    const std::wstring folder_ =
        FileSystem::temporaryFolder() + L"corvane-папка-" + std::to_wstring(::GetCurrentProcessId());
};

std::vector<std::wstring> namesIn(const std::wstring& folder, const std::wstring& mask) {
    std::vector<std::wstring> names;
    for (const FileSystem::Entry& entry : FileSystem::list(folder, mask))
        names.push_back(entry.name);
    std::sort(names.begin(), names.end());
    return names;
}

TEST_F(FileTest, ReadsWritesAndSeeksBeyondFourGigabytes) {
    const auto file = File::open(path(L"большой.bin"), writing);
    constexpr std::int64_t beyond = 5'000'000'000;
    // Sparse files spare the disk; where the file system has none, the size alone is set.
    file->resize(static_cast<std::uint64_t>(beyond));
    EXPECT_EQ(file->state().size, static_cast<std::uint64_t>(beyond));
    EXPECT_EQ(file->seek(-1, Stream::Origin::end), static_cast<std::uint64_t>(beyond) - 1);
    EXPECT_EQ(errorCode([&] { file->seek(beyond + 1, Stream::Origin::beginning); }),
              E_OFFSET_OUT_OF_RANGE.code);
    file->resize(3);
    EXPECT_EQ(file->state().position, 3u) << "the position moves to the new end";
    file->seekAndWrite(0, Bytes{1, 2, 3, 4, 5});
    EXPECT_EQ(*file->seekAndRead(1, 100), (Bytes{2, 3, 4, 5}));
    EXPECT_TRUE(file->read(std::size_t{1})->empty());
}

TEST_F(FileTest, FailuresNameTheCauseAndTheSystemsError) {
    const std::wstring there = path(L"a.bin");
    const std::wstring absent = path(L"no.bin");
    const std::wstring locked = path(L"b.bin");
    writeFile(there, Bytes{1});
    const auto exclusive = File::open(locked, writing);
    const auto open = [](const std::wstring& name, DWORD access = GENERIC_READ, DWORD how = OPEN_EXISTING) {
        return [=] { File::open(name, {access, FILE_SHARE_READ, how, FILE_ATTRIBUTE_NORMAL}); };
    };
    const auto readClosed = [&] {
        const auto file = File::open(there, {});
        file->close();
        file->close();
        file->read(std::size_t{1});
    };
    const struct {
        const char* name;
        std::function<void()> action;
        Failure failure;
    } rows[] = {
        {"absent file", open(absent), {28, ERROR_FILE_NOT_FOUND}},
        {"absent folder", open(path(L"no\\a.bin")), {28, ERROR_PATH_NOT_FOUND}},
        {"share violation", open(locked), {28, ERROR_SHARING_VIOLATION}},
        {"file is there", open(there, GENERIC_WRITE, CREATE_NEW), {28, ERROR_FILE_EXISTS}},
        {"empty path", open(L""), {40, ERROR_INVALID_NAME}},
        {"zero in the path", open(there + L'\0' + L'x'), {40, ERROR_INVALID_NAME}},
        {"opened for reading", [&] { File::open(there, {})->write(Bytes{1}); }, {17, ERROR_ACCESS_DENIED}},
        {"closed", readClosed, {14, 0}},
        {"onto a file", [&] { FileSystem::copyFile(there, locked, false); }, {17, ERROR_FILE_EXISTS}},
        {"move", [&] { FileSystem::moveFile(absent, path(L"c"), true); }, {38, ERROR_FILE_NOT_FOUND}},
        {"delete", [&] { FileSystem::deleteFile(absent); }, {39, ERROR_FILE_NOT_FOUND}},
        {"contents", [&] { FileSystem::deleteFolder(folder_, false); }, {44, ERROR_DIR_NOT_EMPTY}},
        {"attributes", [&] { FileSystem::entryOf(absent); }, {27, ERROR_FILE_NOT_FOUND}},
        {"folder in a mask", [&] { FileSystem::list(folder_, L"..\\*"); }, {40, ERROR_INVALID_NAME}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(failureOf(row.action), row.failure) << row.name;
    // Systems differ in the number.
    EXPECT_EQ(errorCode([&] { FileSystem::list(there, L"*"); }), 40u) << "list of a file";
}

TEST_F(FileTest, WholeFilesReplaceContentAndKeepAttributes) {
    const std::wstring file = path(L"данные.bin");
    writeFile(file, Bytes(1000, 7));
    FileSystem::setAttributes(file, FILE_ATTRIBUTE_HIDDEN);
    writeFile(file, Bytes{1, 2});
    EXPECT_EQ(readFile(file), (Bytes{1, 2}));
    EXPECT_TRUE((FileSystem::entryOf(file).attributes & FILE_ATTRIBUTE_HIDDEN) != 0);
    writeFile(file, {});
    EXPECT_EQ(readFile(file), Bytes());
}

TEST_F(FileTest, LongPathsWork) {
    std::wstring deep = folder_;
    for (int i = 0; i < 8; ++i)
        deep += L'\\' + std::wstring(50, static_cast<wchar_t>(L'а' + i));
    FileSystem::createFolder(deep);
    FileSystem::createFolder(deep);
    for (const wchar_t* name : {L"a/b/c", L"d\\e\\", L"."}) {
        FileSystem::createFolder(path(name));
        EXPECT_TRUE(FileSystem::folderExists(path(name))) << name;
    }
    EXPECT_TRUE(FileSystem::folderExists(deep));
    writeFile(deep + L"\\файл.txt", Bytes{1, 2, 3});
    FileSystem::copyFile(deep + L"\\файл.txt", deep + L"\\b.txt", false);
    FileSystem::moveFile(deep + L"\\b.txt", deep + L"\\c.dat", false);
    EXPECT_EQ(readFile(deep + L"\\c.dat"), (Bytes{1, 2, 3}));
    using Names = std::vector<std::wstring>;
    EXPECT_EQ(namesIn(deep, L"*"), (Names{L"c.dat", L"файл.txt"}));
    EXPECT_EQ(namesIn(deep, L"*.dat"), Names{L"c.dat"});
    EXPECT_EQ(namesIn(deep, L"*.none"), Names{});
}

TEST_F(FileTest, TemporaryFilesMayBeKept) {
    for (const bool keep : {false, true}) {
        const auto file = FileSystem::createTemporaryFile(keep);
        file->write(Bytes{1, 2, 3});
        EXPECT_EQ(readFile(file->path()), (Bytes{1, 2, 3})) << "while it is open";
        file->close();
        EXPECT_EQ(FileSystem::fileExists(file->path()), keep);
        if (keep)
            FileSystem::deleteFile(file->path());
    }
}

TEST_F(FileTest, DeletingAFolderDoesNotFollowLinks) {
    FileSystem::createFolder(path(L"outside"));
    writeFile(path(L"outside\\keep.txt"), Bytes{1});
    FileSystem::createFolder(path(L"tree\\inner"));
    writeFile(path(L"tree\\inner\\file.txt"), Bytes{1});
    FileSystem::setAttributes(path(L"tree\\inner\\file.txt"), FILE_ATTRIBUTE_READONLY);
    constexpr DWORD asFolder = 1;  // SYMBOLIC_LINK_FLAG_DIRECTORY
    RecordProperty("linked",
                   ::CreateSymbolicLinkW(path(L"tree\\link").c_str(), path(L"outside").c_str(), asFolder));
    FileSystem::deleteFolder(path(L"tree\\"), true);
    EXPECT_FALSE(FileSystem::folderExists(path(L"tree")));
    EXPECT_TRUE(FileSystem::fileExists(path(L"outside\\keep.txt")));
}

}  // namespace
