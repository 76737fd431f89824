#include "compression/zip_disk_date.h"
#include "compression/zip_folder.h"
#include "core/check.h"
#include "core/errors.h"
#include "core/handles.h"
#include "core/text.h"
#include "stream/file.h"
#include "stream/stream_loop.h"

#include <vector>

namespace Corvane::Compression {
namespace {

struct Source {
    std::wstring path;
    std::string name;
    bool folder;
    std::uint64_t size;
    ZipDate date;
};

std::uint64_t sizeOf(const WIN32_FIND_DATAW& found) noexcept {
    return std::uint64_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow;
}

// Other reparse points, of deduplicated files for example, are files and folders to everybody.
bool isLink(const WIN32_FIND_DATAW& found) noexcept {
    return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           (found.dwReserved0 == IO_REPARSE_TAG_SYMLINK || found.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
}

bool isSelfOrParent(const wchar_t* name) noexcept {
    return name[0] == L'.' && (name[1] == 0 || (name[1] == L'.' && name[2] == 0));
}

bool isFolder(const WIN32_FIND_DATAW& found) noexcept {
    return (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

class SourceList {
public:
    void addBelow(const std::wstring& folder, const std::string& prefix, const SharedProgress& progress) {
        WIN32_FIND_DATAW found{};
        const FileSearch search(::FindFirstFileW(unlimitedPath(folder + L"\\*").c_str(), &found));
        checkWin32(static_cast<bool>(search), E_DIRECTORY_PATH, L"FindFirstFileW");
        do {
            Stream::throwIfCanceled(progress);
            if (!isSelfOrParent(found.cFileName) && !isLink(found)) {
                add(folder + L"\\" + found.cFileName, prefix + toUtf8(found.cFileName), found, progress);
            }
        } while (::FindNextFileW(search.get(), &found));
        if (::GetLastError() != ERROR_NO_MORE_FILES) {
            throw Win32Exception(E_DIRECTORY_PATH);
        }
    }

    void addFile(const std::wstring& path, const std::string& prefix) {
        WIN32_FIND_DATAW found{};
        const FileSearch search(::FindFirstFileW(unlimitedPath(path).c_str(), &found));
        checkWin32(static_cast<bool>(search), E_GET_FILE_ATTRIBUTES, L"FindFirstFileW");
        add(path, prefix + toUtf8(found.cFileName), found, nullptr);
    }

    const std::vector<Source>& sources() const noexcept { return sources_; }
    std::uint64_t size() const noexcept { return size_; }

private:
    void add(const std::wstring& path, const std::string& name, const WIN32_FIND_DATAW& found,
             const SharedProgress& progress) {
        const bool folder = isFolder(found);
        const std::uint64_t size = folder ? 0 : sizeOf(found);
        sources_.push_back(
            {path, folder ? name + '/' : name, folder, size, zipDateOf(found.ftLastWriteTime)});
        size_ += size;
        if (folder) {
            addBelow(path, name + '/', progress);
        }
    }

    std::vector<Source> sources_;
    std::uint64_t size_ = 0;
};

SourceList listSources(const std::wstring& path, const std::string& prefix, const SharedProgress& progress) {
    const DWORD attributes = ::GetFileAttributesW(unlimitedPath(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        throw Win32Exception(E_GET_FILE_ATTRIBUTES);
    }
    SourceList list;
    const std::string folder = prefix.empty() || prefix.ends_with('/') ? prefix : prefix + '/';
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        list.addBelow(path, folder, progress);
    } else {
        list.addFile(path, folder);
    }
    return list;
}

}  // namespace

void addFromDisk(ZipArchive& archive, const std::wstring& path, const std::string& prefix,
                 const SharedProgress& progress) {
    const SourceList list = listSources(path, prefix, progress);
    if (progress) {
        progress->start(list.size());
    }
    archive.update([&](ZipWriter& writer) {
        for (const Source& source : list.sources()) {
            Stream::throwIfCanceled(progress);
            if (source.folder) {
                writer.addFolder(source.name, source.date);
            } else {
                writer.addFile(source.name, source.date, *File::open(source.path, {}), progress);
            }
        }
        Stream::throwIfCanceled(progress);
    });
}

}  // namespace Corvane::Compression
