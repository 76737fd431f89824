#include "stream/file_system.h"

#include "core/system_exception.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

using namespace Corvane;

namespace {

// A folder of one test, deleted with it.
class ScratchFolder {
public:
    ScratchFolder()
        : path_(FileSystem::temporaryFolder() + L"corvane-папка-" + std::to_wstring(::GetCurrentProcessId()) +
                L"-" + std::to_wstring(++count)) {
        FileSystem::createFolder(path_);
    }
    ~ScratchFolder() {
        try {
            FileSystem::deleteFolder(path_, true);
        } catch (const Exception&) {
            ADD_FAILURE() << "the folder of the test could not be deleted";
        }
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::wstring operator/(const std::wstring& name) const { return path_ + L'\\' + name; }
    const std::wstring& path() const { return path_; }

private:
    inline static int count = 0;
    std::wstring path_;
};

struct Failure {
    std::uint32_t code = 0;
    std::uint32_t error = 0;
    bool operator==(const Failure&) const = default;
};

Failure failureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Win32Exception& exception) {
        return {exception.code(), exception.error()};
    } catch (const Exception& exception) {
        return {exception.code(), 0};
    }
    return {};
}

std::vector<std::wstring> namesIn(const std::wstring& folder, const std::wstring& mask) {
    std::vector<std::wstring> names;
    for (const FileSystem::Entry& entry : FileSystem::list(folder, mask)) {
        names.push_back(entry.name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

constexpr FileMode writing{GENERIC_READ | GENERIC_WRITE, 0, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL};

TEST(File, ReadsWritesAndSeeksBeyondFourGigabytes) {
    const ScratchFolder folder;
    const auto file = File::open(folder / L"большой.bin", writing);
    constexpr std::int64_t beyond = 5'000'000'000;
    // Sparse files spare the disk; where the file system has none, the size alone is set.
    file->resize(static_cast<std::uint64_t>(beyond));
    EXPECT_EQ(file->state().size, static_cast<std::uint64_t>(beyond));
    EXPECT_EQ(file->seek(-1, Stream::Origin::end), static_cast<std::uint64_t>(beyond) - 1);
    EXPECT_EQ(failureOf([&] { file->seek(beyond + 1, Stream::Origin::beginning); }),
              (Failure{E_OFFSET_OUT_OF_RANGE.code, 0}));
    file->resize(3);
    EXPECT_EQ(file->state().position, 3u) << "the position moves to the new end";
    file->seekAndWrite(0, Bytes{1, 2, 3, 4, 5});
    EXPECT_EQ(*file->seekAndRead(1, 100), (Bytes{2, 3, 4, 5}));
    EXPECT_TRUE(file->read(std::size_t{1})->empty());
}

TEST(File, FailuresNameTheCauseAndTheSystemsError) {
    const ScratchFolder folder;
    const std::wstring path = folder / L"a.bin";
    writeFile(path, Bytes{1});
    const auto open = [](const std::wstring& name, DWORD access, DWORD disposition) {
        return [=] { File::open(name, {access, FILE_SHARE_READ, disposition, FILE_ATTRIBUTE_NORMAL}); };
    };
    const auto exclusive = File::open(folder / L"b.bin", writing);
    struct Case {
        const char* name;
        std::function<void()> action;
        Failure failure;
    };
    const Case cases[] = {
        {"absent file", open(folder / L"no.bin", GENERIC_READ, OPEN_EXISTING), {28, ERROR_FILE_NOT_FOUND}},
        {"absent folder",
         open(folder / L"no\\a.bin", GENERIC_READ, OPEN_EXISTING),
         {28, ERROR_PATH_NOT_FOUND}},
        {"share violation",
         open(folder / L"b.bin", GENERIC_READ, OPEN_EXISTING),
         {28, ERROR_SHARING_VIOLATION}},
        {"file is there", open(path, GENERIC_WRITE, CREATE_NEW), {28, ERROR_FILE_EXISTS}},
        {"empty path", open(L"", GENERIC_READ, OPEN_EXISTING), {40, ERROR_INVALID_NAME}},
        {"zero in the path",
         open(path + std::wstring(1, L'\0') + L"x", GENERIC_READ, OPEN_EXISTING),
         {40, ERROR_INVALID_NAME}},
        {"writing a file opened for reading",
         [&] { File::open(path, {})->write(Bytes{1}); },
         {17, ERROR_ACCESS_DENIED}},
        {"closed",
         [&] {
             const auto f = File::open(path, {});
             f->close();
             f->close();
             f->read(std::size_t{1});
         },
         {14, 0}},
        {"copy onto a file",
         [&] { FileSystem::copyFile(path, folder / L"b.bin", false); },
         {17, ERROR_FILE_EXISTS}},
        {"move of nothing",
         [&] { FileSystem::moveFile(folder / L"no.bin", folder / L"c.bin", true); },
         {38, ERROR_FILE_NOT_FOUND}},
        {"delete of nothing",
         [&] { FileSystem::deleteFile(folder / L"no.bin"); },
         {39, ERROR_FILE_NOT_FOUND}},
        {"folder with contents",
         [&] { FileSystem::deleteFolder(folder.path(), false); },
         {44, ERROR_DIR_NOT_EMPTY}},
        {"absent attributes", [&] { FileSystem::entryOf(folder / L"no.bin"); }, {27, ERROR_FILE_NOT_FOUND}},
        {"mask with a folder", [&] { FileSystem::list(folder.path(), L"..\\*"); }, {40, ERROR_INVALID_NAME}},
        {"list of a file", [&] { FileSystem::list(path, L"*"); }, {40, ERROR_PATH_NOT_FOUND}},
    };
    for (const Case& c : cases) {
        const Failure failure = failureOf(c.action);
        EXPECT_EQ(failure.code, c.failure.code) << c.name;
        if (failure.code != 40 || c.failure.error == ERROR_INVALID_NAME) {
            EXPECT_EQ(failure.error, c.failure.error) << c.name;
        }
    }
}

TEST(File, WholeFilesReplaceContentAndKeepAttributes) {
    const ScratchFolder folder;
    const std::wstring path = folder / L"данные.bin";
    writeFile(path, Bytes(1000, 7));
    FileSystem::setAttributes(path, FILE_ATTRIBUTE_HIDDEN);
    writeFile(path, Bytes{1, 2});
    EXPECT_EQ(readFile(path), (Bytes{1, 2}));
    EXPECT_TRUE((FileSystem::entryOf(path).attributes & FILE_ATTRIBUTE_HIDDEN) != 0);
    writeFile(path, {});
    EXPECT_EQ(readFile(path), Bytes());
}

TEST(File, LongPathsWork) {
    const ScratchFolder folder;
    std::wstring deep = folder.path();
    for (int i = 0; i < 8; ++i) {
        deep += L'\\' + std::wstring(50, static_cast<wchar_t>(L'а' + i));
    }
    ASSERT_GT(deep.size(), 260u + 100u);
    FileSystem::createFolder(deep);
    FileSystem::createFolder(deep);
    EXPECT_TRUE(FileSystem::folderExists(deep));
    writeFile(deep + L"\\файл.txt", Bytes{1, 2, 3});
    FileSystem::copyFile(deep + L"\\файл.txt", deep + L"\\b.txt", false);
    FileSystem::moveFile(deep + L"\\b.txt", deep + L"\\c.dat", false);
    EXPECT_EQ(readFile(deep + L"\\c.dat"), (Bytes{1, 2, 3}));
    EXPECT_EQ(namesIn(deep, L"*"), (std::vector<std::wstring>{L"c.dat", L"файл.txt"}));
    EXPECT_EQ(namesIn(deep, L"*.dat"), (std::vector<std::wstring>{L"c.dat"}));
    EXPECT_EQ(namesIn(deep, L"*.none"), (std::vector<std::wstring>{}));
}

TEST(File, TemporaryFilesGoWhenClosedUnlessKept) {
    for (const bool keep : {false, true}) {
        const auto file = FileSystem::createTemporaryFile(keep);
        file->write(Bytes{1, 2, 3});
        EXPECT_TRUE(FileSystem::fileExists(file->path()));
        file->close();
        EXPECT_EQ(FileSystem::fileExists(file->path()), keep);
        if (keep) {
            FileSystem::deleteFile(file->path());
        }
    }
}

TEST(File, DatesAreSetOneByOne) {
    const ScratchFolder folder;
    const auto file = File::open(folder / L"a.bin", writing);
    const FILETIME accessed = file->times().access;
    const FILETIME written{0xD53E8000, 0x019DB1DE};  // 1970-01-01 UTC
    file->setTimes(nullptr, nullptr, &written);
    const FileTimes after = file->times();
    EXPECT_EQ(::CompareFileTime(&after.write, &written), 0);
    EXPECT_EQ(::CompareFileTime(&after.access, &accessed), 0);
}

TEST(FileSystem, DeletingAFolderDoesNotFollowLinks) {
    const ScratchFolder folder;
    FileSystem::createFolder(folder / L"outside");
    writeFile(folder / L"outside\\keep.txt", Bytes{1});
    FileSystem::createFolder(folder / L"tree\\inner");
    writeFile(folder / L"tree\\inner\\file.txt", Bytes{1});
    FileSystem::setAttributes(folder / L"tree\\inner\\file.txt", FILE_ATTRIBUTE_READONLY);
    constexpr DWORD asFolder = 1;  // SYMBOLIC_LINK_FLAG_DIRECTORY
    const bool linked = ::CreateSymbolicLinkW((folder / L"tree\\link").c_str(), (folder / L"outside").c_str(),
                                              asFolder) != FALSE;
    FileSystem::deleteFolder(folder / L"tree", true);
    EXPECT_FALSE(FileSystem::folderExists(folder / L"tree"));
    EXPECT_TRUE(FileSystem::fileExists(folder / L"outside\\keep.txt"));
    RecordProperty("linked", linked);
}

}  // namespace
