#include "files/file_system.h"

#include "platform/import_patch.h"
#include "support.h"

using namespace Corvane;
using namespace Corvane::Test;

namespace {

// A disk that has room for so many bytes and then fails, or takes nothing and says that all is well.
struct FullDisk {
    static inline LONGLONG room = 0;

    static BOOL WINAPI setEnd(HANDLE file) {
        LARGE_INTEGER end{};
        ::SetFilePointerEx(file, {}, &end, FILE_CURRENT);
        FILE_END_OF_FILE_INFO size{end};
        if (end.QuadPart > room) {
            ::SetLastError(ERROR_DISK_FULL);
            return FALSE;
        }
        return ::SetFileInformationByHandle(file, FileEndOfFileInfo, &size, sizeof(size));
    }
    static BOOL WINAPI writeNothing(HANDLE, LPCVOID, DWORD, LPDWORD done, LPOVERLAPPED) {
        *done = 0;
        return TRUE;
    }
};

TEST(File, WithoutRoomTheOldContentStays) {
    const std::wstring path =
        FileSystem::temporaryFolder() + L"corvane-file-" + std::to_wstring(::GetCurrentProcessId());
    const Bytes old = bytesOf("the old content");
    writeFile(path, old);
    {
        const ImportPatch ends(&::SetEndOfFile, &FullDisk::setEnd);
        FullDisk::room = 20;
        EXPECT_EQ(failureOf([&] { writeFile(path, Bytes(21)); }),
                  Failure(E_FILE_WRITE.code, ERROR_DISK_FULL));
        EXPECT_EQ(readFile(path), old) << "room is made sure of first";
        FullDisk::room = 1000;
        const ImportPatch writes(&::WriteFile, &FullDisk::writeNothing);
        EXPECT_EQ(failureOf([&] { writeFile(path, Bytes(100)); }),
                  Failure(E_FILE_WRITE.code, ERROR_WRITE_FAULT));
        EXPECT_EQ(readFile(path), old) << "the growth is taken back";
        EXPECT_EQ(failureOf([&] { writeFile(path + L"-new", Bytes(1)); }),
                  Failure(E_FILE_WRITE.code, ERROR_WRITE_FAULT));
        EXPECT_FALSE(FileSystem::fileExists(path + L"-new"));
    }
    writeFile(path, Bytes{1});
    EXPECT_EQ(readFile(path), Bytes{1});
    FileSystem::deleteFile(path);
}

}  // namespace
