#include "files/file_system.h"

#include "core/check.h"
#include "core/handles.h"
#include "core/log.h"
#include "core/system_exception.h"

#include <array>
#include <utility>

namespace Corvane::FileSystem {
namespace {

constexpr DWORD none = INVALID_FILE_ATTRIBUTES;
// ERROR_DIRECTORY_NOT_SUPPORTED, which the compiler's headers lack.
constexpr DWORD directoryNotSupported = 336;

void logPath(const wchar_t* function, const std::wstring& path) {
    writeLog(LogLevel::debug, function, L"[in] path: ", path);
}

void logTransfer(const wchar_t* function, const std::wstring& source, const std::wstring& target,
                 bool overwrite) {
    writeLog(LogLevel::debug, function, L"[in] source: ", source, L" [in] target: ", target,
             L" [in] overwrite: ", overwrite);
}

DWORD attributesOf(const std::wstring& path) noexcept {
    return ::GetFileAttributesW(path.c_str());
}

bool isFolder(DWORD attributes) noexcept {
    return attributes != none && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Only for reparse points is the reserved word their tag. One without a tag may lead anywhere; those of
// deduplicated files, and of files in a cloud, say that they do not.
bool leadsElsewhere(const WIN32_FIND_DATAW& data) noexcept {
    return (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           (data.dwReserved0 == 0 || IsReparseTagNameSurrogate(data.dwReserved0));
}

Entry entryFrom(const WIN32_FIND_DATAW& data) {
    return {data.cFileName, data.dwFileAttributes,
            (std::uint64_t{data.nFileSizeHigh} << 32) | data.nFileSizeLow, data.ftLastWriteTime,
            leadsElsewhere(data)};
}

WIN32_FILE_ATTRIBUTE_DATA dataOf(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    checkWin32(::GetFileAttributesExW(unlimitedPath(path).c_str(), GetFileExInfoStandard, &data),
               E_GET_FILE_ATTRIBUTES, L"GetFileAttributesExW");
    return data;
}

// A folder's verbatim path without separators at its end, but for a drive's: through them the system would
// go on to where a link leads.
std::wstring folderPath(const std::wstring& path) {
    std::wstring full = verbatimPath(path);
    while (full.ends_with(L'\\') && !full.ends_with(L":\\"))
        full.pop_back();
    return full;
}

// A read-only file or folder is deleted all the same when its folder is deleted with its contents.
void makeDeletable(const std::wstring& path, DWORD attributes) noexcept {
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0)
        ::SetFileAttributesW(path.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
}

// A folder whose contents are being deleted. It is held open, so that nobody can put a link in its place.
struct Level {
    Level(std::wstring folder, DWORD folderAttributes)
        : path(std::move(folder)),
          attributes(folderAttributes),
          held(::CreateFileW(path.c_str(), FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                             OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                             nullptr)) {
        checkWin32(static_cast<bool>(held), E_DIRECTORY_DELETE, L"CreateFileW");
        if (!isLink(path))
            left = list(path, L"*");
    }

    std::wstring path;
    DWORD attributes;
    FileHandle held;
    std::vector<Entry> left;
};

// What others hold open, such as programs that look into every file, goes with their last handle only, though
// it is deleted already. They are given a second.
BOOL removeEmptied(const std::wstring& path) noexcept {
    constexpr DWORD pause = 50;
    for (DWORD left = 1000;; left -= pause) {
        if (::RemoveDirectoryW(path.c_str()))
            return TRUE;
        if (::GetLastError() != ERROR_DIR_NOT_EMPTY || left == 0)
            return FALSE;
        ::Sleep(pause);
    }
}

void logDeleting(const std::wstring& path) {
    writeLog(LogLevel::debug, L"Corvane::FileSystem::deleteFolder", L"deleting: ", path);
}

// `path` is verbatim: names inside that the system would read otherwise, such as ".. ", must not lead
// elsewhere.
void deleteTree(const std::wstring& path, DWORD attributes) {
    std::vector<Level> levels;
    levels.emplace_back(path, attributes);
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.left.empty()) {
            logDeleting(level.path);
            level.held.reset();
            makeDeletable(level.path, level.attributes);
            checkWin32(removeEmptied(level.path), E_DIRECTORY_DELETE, L"RemoveDirectoryW");
            levels.pop_back();
            continue;
        }
        const DWORD innerAttributes = level.left.back().attributes;
        std::wstring inner = join(level.path, level.left.back().name);
        level.left.pop_back();
        if (isFolder(innerAttributes)) {
            levels.emplace_back(std::move(inner), innerAttributes);
        } else {
            logDeleting(inner);
            makeDeletable(inner, innerAttributes);
            checkWin32(::DeleteFileW(inner.c_str()), E_DIRECTORY_DELETE, L"DeleteFileW");
        }
    }
}

// A folder that is there may be refused with any code: a drive, for one, denies access.
DWORD makeFolder(const std::wstring& path) noexcept {
    if (::CreateDirectoryW(path.c_str(), nullptr))
        return ERROR_SUCCESS;
    const DWORD error = ::GetLastError();
    return isFolder(attributesOf(path)) ? ERROR_SUCCESS : error;
}

// Without recursion: a path may have very many parts. It begins with \\?\ or \\.\, which are no folders.
void makeFolders(const std::wstring& path) {
    constexpr std::size_t prefixSize = 4;
    std::size_t end = path.size();
    DWORD error = makeFolder(path);
    while (error == ERROR_PATH_NOT_FOUND) {
        const std::size_t separator = path.find_last_of(L'\\', end - 1);
        if (separator < prefixSize)
            break;
        end = separator;
        error = makeFolder(path.substr(0, end));
    }
    while (error == ERROR_SUCCESS && end < path.size()) {
        end = std::min(path.find(L'\\', end + 1), path.size());
        error = makeFolder(path.substr(0, end));
    }
    if (error != ERROR_SUCCESS)
        failWin32(E_DIRECTORY_PATH, L"CreateDirectoryW", error);
}

}  // namespace

std::wstring join(const std::wstring& folder, const std::wstring& name) {
    return folder.empty() || folder.ends_with(L'\\') ? folder + name : folder + L'\\' + name;
}

std::wstring temporaryFolder() {
    std::array<wchar_t, MAX_PATH + 1> folder{};
    const DWORD length = ::GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    checkWin32(length != 0 && length < folder.size(), E_GET_TEMP_FOLDER_PATH, L"GetTempPathW");
    return std::wstring(folder.data(), length);
}

std::shared_ptr<File> createTemporaryFile(bool keep) {
    writeLog(LogLevel::debug, L"Corvane::FileSystem::createTemporaryFile", L"[in] keep: ", keep);
    std::array<wchar_t, MAX_PATH> name{};
    // Creates the file, so that nobody else gets its name.
    checkWin32(::GetTempFileNameW(temporaryFolder().c_str(), L"vtc", 0, name.data()), E_CREATE_FILE,
               L"GetTempFileNameW");
    FileMode mode{GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING, FILE_ATTRIBUTE_TEMPORARY};
    if (keep) {
        mode.attributes = FILE_ATTRIBUTE_NORMAL;
    } else {
        mode.access |= DELETE;
        mode.share |= FILE_SHARE_DELETE;
        mode.attributes |= FILE_FLAG_DELETE_ON_CLOSE;
    }
    try {
        return File::open(name.data(), mode);
    } catch (...) {
        ::DeleteFileW(name.data());
        throw;
    }
}

bool fileExists(const std::wstring& path) {
    logPath(L"Corvane::FileSystem::fileExists", path);
    const DWORD attributes = attributesOf(unlimitedPath(path));
    return attributes != none && !isFolder(attributes);
}

bool folderExists(const std::wstring& path) {
    logPath(L"Corvane::FileSystem::folderExists", path);
    return isFolder(attributesOf(unlimitedPath(path)));
}

Entry entryOf(const std::wstring& path) {
    logPath(L"Corvane::FileSystem::entryOf", path);
    const WIN32_FILE_ATTRIBUTE_DATA data = dataOf(path);
    return {path, data.dwFileAttributes, (std::uint64_t{data.nFileSizeHigh} << 32) | data.nFileSizeLow,
            data.ftLastWriteTime, false};
}

Entry find(const std::wstring& path) {
    logPath(L"Corvane::FileSystem::find", path);
    // No mask: the system would search for one.
    checkWin32(attributesOf(unlimitedPath(path)) != none, E_GET_FILE_ATTRIBUTES, L"GetFileAttributesW");
    WIN32_FIND_DATAW data{};
    const FileSearch search(::FindFirstFileW(unlimitedPath(path).c_str(), &data));
    checkWin32(static_cast<bool>(search), E_GET_FILE_ATTRIBUTES, L"FindFirstFileW");
    return entryFrom(data);
}

bool isLink(const std::wstring& path) {
    const DWORD attributes = attributesOf(unlimitedPath(path));
    return attributes != none && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && find(path).link;
}

std::uint64_t lengthOf(const std::wstring& path) {
    const Entry entry = entryOf(path);
    if (isFolder(entry.attributes))
        throw Win32Exception(E_FILE_SIZE, directoryNotSupported);
    return entry.size;
}

FileTimes timesOf(const std::wstring& path) {
    logPath(L"Corvane::FileSystem::timesOf", path);
    const WIN32_FILE_ATTRIBUTE_DATA data = dataOf(path);
    return {data.ftCreationTime, data.ftLastAccessTime, data.ftLastWriteTime};
}

void setAttributes(const std::wstring& path, DWORD attributes) {
    writeLog(LogLevel::debug, L"Corvane::FileSystem::setAttributes", L"[in] path: ", path,
             L" [in] attributes: ", attributes);
    checkWin32(::SetFileAttributesW(unlimitedPath(path).c_str(), attributes), E_FILE_WRITE,
               L"SetFileAttributesW");
}

void copyFile(const std::wstring& source, const std::wstring& target, bool overwrite) {
    logTransfer(L"Corvane::FileSystem::copyFile", source, target, overwrite);
    checkWin32(attributesOf(unlimitedPath(source)) != none, E_CREATE_FILE, L"GetFileAttributesW");
    checkWin32(::CopyFileW(unlimitedPath(source).c_str(), unlimitedPath(target).c_str(), !overwrite),
               E_FILE_WRITE, L"CopyFileW");
}

void moveFile(const std::wstring& source, const std::wstring& target, bool overwrite) {
    logTransfer(L"Corvane::FileSystem::moveFile", source, target, overwrite);
    const DWORD flags = MOVEFILE_COPY_ALLOWED | (overwrite ? DWORD{MOVEFILE_REPLACE_EXISTING} : 0);
    checkWin32(::MoveFileExW(unlimitedPath(source).c_str(), unlimitedPath(target).c_str(), flags),
               E_FILE_MOVE, L"MoveFileExW");
}

void deleteFile(const std::wstring& path) {
    logPath(L"Corvane::FileSystem::deleteFile", path);
    checkWin32(::DeleteFileW(unlimitedPath(path).c_str()), E_FILE_DELETE, L"DeleteFileW");
}

void createFolder(const std::wstring& path) {
    logPath(L"Corvane::FileSystem::createFolder", path);
    makeFolders(folderPath(path));
}

void deleteFolder(const std::wstring& path, bool withContents) {
    writeLog(LogLevel::debug, L"Corvane::FileSystem::deleteFolder", L"[in] path: ", path,
             L" [in] with contents: ", withContents);
    const std::wstring full = folderPath(path);
    const DWORD attributes = attributesOf(full);
    checkWin32(attributes != none, E_DIRECTORY_DELETE, L"GetFileAttributesW");
    if (withContents && isFolder(attributes))
        deleteTree(full, attributes);
    else
        checkWin32(::RemoveDirectoryW(full.c_str()), E_DIRECTORY_DELETE, L"RemoveDirectoryW");
}

std::vector<Entry> list(const std::wstring& folder, const std::wstring& mask) {
    writeLog(LogLevel::debug, L"Corvane::FileSystem::list", L"[in] folder: ", folder, L" [in] mask: ", mask);
    // A mask names files of this folder only.
    if (mask.empty() || mask.find_first_of(std::wstring_view(L"\\/:\0", 4)) != std::wstring::npos)
        throw Win32Exception(E_DIRECTORY_PATH, ERROR_INVALID_NAME);
    const std::wstring full = unlimitedPath(folder);
    const DWORD attributes = attributesOf(full);
    checkWin32(attributes != none, E_DIRECTORY_PATH, L"GetFileAttributesW");
    if (!isFolder(attributes))
        throw Win32Exception(E_DIRECTORY_PATH, ERROR_DIRECTORY);
    WIN32_FIND_DATAW data{};
    const FileSearch search(::FindFirstFileW(unlimitedPath(join(full, mask)).c_str(), &data));
    std::vector<Entry> entries;
    if (!search) {
        if (const DWORD error = ::GetLastError(); error != ERROR_FILE_NOT_FOUND)
            failWin32(E_DIRECTORY_PATH, L"FindFirstFileW", error);
        return entries;
    }
    do {
        const std::wstring_view name = data.cFileName;
        if (name != L"." && name != L"..")
            entries.push_back(entryFrom(data));
    } while (::FindNextFileW(search.get(), &data));
    if (const DWORD error = ::GetLastError(); error != ERROR_NO_MORE_FILES)
        failWin32(E_DIRECTORY_PATH, L"FindNextFileW", error);
    return entries;
}

}  // namespace Corvane::FileSystem
