#include "stream/file_system.h"

#include "support.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

TEST(FileSystem, DeletingAFolderDoesNotFollowLinks) {
    const std::wstring folder =
        FileSystem::temporaryFolder() + L"corvane-папка-" + std::to_wstring(::GetCurrentProcessId());
    FileSystem::createFolder(folder + L"\\tree\\inner");
    FileSystem::createFolder(folder + L"\\outside");
    writeFile(folder + L"\\outside\\keep.txt", Bytes{1});
    writeFile(folder + L"\\tree\\inner\\file.txt", Bytes{1});
    FileSystem::setAttributes(folder + L"\\tree\\inner\\file.txt", FILE_ATTRIBUTE_READONLY);
    constexpr DWORD asFolder = 1;  // SYMBOLIC_LINK_FLAG_DIRECTORY
    RecordProperty("linked", ::CreateSymbolicLinkW((folder + L"\\tree\\link").c_str(),
                                                   (folder + L"\\outside").c_str(), asFolder));
    FileSystem::deleteFolder(folder + L"\\tree\\", true);
    EXPECT_FALSE(FileSystem::folderExists(folder + L"\\tree"));
    EXPECT_TRUE(FileSystem::fileExists(folder + L"\\outside\\keep.txt"));
    FileSystem::deleteFolder(folder, true);
}

}  // namespace
