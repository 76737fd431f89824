#include "compression/named_exception.h"
#include "compression/unzip_file.h"
#include "compression/zip_disk_date.h"
#include "compression/zip_folder.h"
#include "compression/zip_name.h"
#include "compression/zip_places.h"
#include "core/check.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/wide_text.h"
#include "files/file.h"
#include "files/file_system.h"
#include "stream/stream_loop.h"

#include <utility>
#include <vector>

namespace Corvane::Compression {
namespace {

using FileSystem::join;

struct Target {
    std::size_t index;
    std::vector<std::wstring> folders;  // below the root
    std::wstring file;                  // empty for a folder
    ZipDate date;
};

std::vector<std::string> partsOf(const ZipEntry& entry) {
    auto parts = detail::zipNameParts(entry.name);
    if (!parts || (parts->empty() && !entry.directory))
        throw detail::ZipException(E_UNZIP_BAD, detail::badName);
    return *std::move(parts);
}

Target targetOf(const ZipEntry& entry, std::size_t index) {
    Target target{index, {}, {}, entry.date};
    for (const std::string& part : partsOf(entry))
        target.folders.push_back(fromUtf8(part));
    if (!entry.directory) {
        target.file = std::move(target.folders.back());
        target.folders.pop_back();
    }
    return target;
}

void checkEntry(const ZipEntry& entry, detail::ZipPlaces& places) {
    if (places.put(partsOf(entry), entry.directory) == detail::ZipPlaces::Meeting::obstacle)
        throw detail::ZipException(E_UNZIP_BAD, detail::takenName);
    detail::checkSupported(entry);
}

// The size of all contents together, when all entries can be restored beside each other.
std::uint64_t checkedSize(const ZipEntries& entries, std::uint64_t maxSize, const SharedProgress& progress) {
    detail::ZipPlaces places;
    std::uint64_t size = 0;
    for (const ZipEntry& entry : entries) {
        Stream::throwIfCanceled(progress);
        naming(fromUtf8(entry.name), [&] { checkEntry(entry, places); });
        if (entry.size > maxSize - size)
            throw Exception(E_BINARY_MAX_SIZE);
        size += entry.size;
    }
    return size;
}

// The folders of one extraction, made as they are needed.
class FolderMaker {
public:
    // The root may be reached through links, and folders above it may be missing as well.
    FolderMaker(const std::wstring& root, const SharedProgress& progress)
        : root_(verbatimPath(root)), progress_(progress) {
        FileSystem::createFolder(root_);
    }

    // The path of folders below the root.
    std::wstring make(const std::vector<std::wstring>& folders) {
        std::wstring path = root_;
        std::size_t folder = detail::PathTree::root;
        for (const std::wstring& name : folders) {
            path = join(path, name);
            const auto [number, isNew] = known_.add(folder, name);
            if (isNew) {
                Stream::throwIfCanceled(progress_);
                makeOne(path);
            }
            folder = number;
        }
        return path;
    }

private:
    static void makeOne(const std::wstring& path) {
        if (::CreateDirectoryW(path.c_str(), nullptr))
            return;
        const DWORD error = ::GetLastError();
        const DWORD attributes = ::GetFileAttributesW(path.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0 ||
            FileSystem::isLink(path))
            failWin32(E_DIRECTORY_PATH, L"CreateDirectoryW", error);
    }

    std::wstring root_;
    const SharedProgress& progress_;
    detail::PathTree known_;
};

bool exists(const std::wstring& path) noexcept {
    return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// No other thread takes the same one.
std::wstring temporaryPath(const std::wstring& folder) {
    const std::wstring begin = join(folder, L"~vtc" + std::to_wstring(::GetCurrentThreadId()) + L'-');
    for (unsigned number = 0;; ++number) {
        std::wstring path = begin + std::to_wstring(number) + L".tmp";
        if (!exists(path))
            return path;
    }
}

// An old file stays until the new one is complete.
void extractFile(const ZipArchive& archive, const Target& target, const std::wstring& folder, bool overwrite,
                 const SharedProgress& progress) {
    const std::wstring path = join(folder, target.file);
    if (FileSystem::isLink(path))
        failWin32(E_CREATE_FILE, L"CreateFileW", ERROR_FILE_EXISTS);
    const bool replaces = overwrite && exists(path);
    const std::wstring written = replaces ? temporaryPath(folder) : path;
    const std::shared_ptr<File> file =
        File::open(written, {.access = GENERIC_WRITE, .share = 0, .disposition = CREATE_NEW});
    try {
        archive.extractFurther(target.index, *file, progress);
        if (const auto time = fileTimeOf(target.date))
            file->setTimes(nullptr, nullptr, &*time);
        file->close();
        if (replaces) {
            checkWin32(::MoveFileExW(written.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING), E_CREATE_FILE,
                       L"MoveFileExW");
        }
    } catch (...) {
        file->close();
        ::DeleteFileW(written.c_str());
        throw;
    }
}

}  // namespace

void extractToFolder(const ZipArchive& archive, const std::wstring& folder, const FolderExtraction& options,
                     const SharedProgress& progress) {
    writeLog(LogLevel::debug, L"Corvane::Compression::extractToFolder", L"[in] folder: ", folder,
             L" [in] size limit: ", options.maxSize, L" [in] overwrite: ", options.overwrite);
    const SharedZipEntries entries = archive.entries();
    const std::uint64_t size = checkedSize(*entries, options.maxSize, progress);
    if (progress)
        progress->start(size);
    FolderMaker folders(folder, progress);
    for (std::size_t index = 0; index < entries->size(); ++index) {
        Stream::throwIfCanceled(progress);
        const ZipEntry& entry = (*entries)[index];
        naming(fromUtf8(entry.name), [&] {
            const Target target = targetOf(entry, index);
            const std::wstring path = folders.make(target.folders);
            if (!target.file.empty())
                extractFile(archive, target, path, options.overwrite, progress);
        });
    }
    Stream::throwIfCanceled(progress);
}

}  // namespace Corvane::Compression
