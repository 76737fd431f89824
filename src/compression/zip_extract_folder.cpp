#include "compression/unzip_file.h"
#include "compression/zip_disk_date.h"
#include "compression/zip_folder.h"
#include "compression/zip_name.h"
#include "core/check.h"
#include "core/errors.h"
#include "core/text.h"
#include "stream/file.h"
#include "stream/file_system.h"
#include "stream/stream_loop.h"

#include <map>
#include <set>
#include <utility>
#include <vector>

namespace Corvane::Compression {
namespace {

struct Target {
    std::size_t index;
    std::vector<std::wstring> folders;  // below the root
    std::wstring file;                  // empty for a folder
    ZipDate date;
};

std::wstring join(const std::wstring& folder, const std::wstring& name) {
    return folder.empty() || folder.back() == L'\\' ? folder + name : folder + L'\\' + name;
}

// As file systems compare names.
std::wstring upperCase(std::wstring text) {
    ::CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
    return text;
}

// Refuses a second file of one name, and files that are folders elsewhere in the archive.
class Places {
public:
    void claim(const Target& target) {
        std::wstring path;
        for (const std::wstring& folder : target.folders) {
            path = join(path, upperCase(folder));
            if (!isFolder_.try_emplace(path, true).first->second) {
                throw Exception(E_UNZIP_BAD);
            }
        }
        if (!target.file.empty() &&
            !isFolder_.try_emplace(join(path, upperCase(target.file)), false).second) {
            throw Exception(E_UNZIP_BAD);
        }
    }

private:
    std::map<std::wstring, bool> isFolder_;
};

Target targetOf(const ZipEntry& entry, std::size_t index) {
    Target target{index, {}, {}, entry.date};
    for (const std::string& part : detail::zipNameParts(entry.name)) {
        target.folders.push_back(fromUtf8(part));
    }
    if (!entry.directory) {
        if (target.folders.empty()) {
            throw Exception(E_UNZIP_BAD);
        }
        target.file = std::move(target.folders.back());
        target.folders.pop_back();
    }
    return target;
}

struct Plan {
    std::vector<Target> targets;
    std::uint64_t size = 0;
};

Plan planOf(const ZipEntries& entries, std::uint64_t maxSize) {
    Plan plan;
    Places places;
    for (std::size_t index = 0; index < entries.size(); ++index) {
        const ZipEntry& entry = entries[index];
        plan.targets.push_back(targetOf(entry, index));
        places.claim(plan.targets.back());
        detail::checkSupported(entry);
        if (entry.size > maxSize - plan.size) {
            throw Exception(E_BINARY_MAX_SIZE);
        }
        plan.size += entry.size;
    }
    return plan;
}

bool isLink(DWORD attributes) noexcept {
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// The folders of one extraction, made as they are needed.
class FolderMaker {
public:
    // The root may be reached through links, and folders above it may be missing as well.
    explicit FolderMaker(const std::wstring& root) : root_(verbatimPath(root)) {
        FileSystem::createFolder(root_);
    }

    // The path of folders below the root.
    std::wstring make(const std::vector<std::wstring>& folders) {
        std::wstring path = root_;
        for (const std::wstring& name : folders) {
            path = join(path, name);
            if (known_.insert(path).second) {
                makeOne(path);
            }
        }
        return path;
    }

private:
    static void makeOne(const std::wstring& path) {
        if (::CreateDirectoryW(path.c_str(), nullptr)) {
            return;
        }
        const DWORD error = ::GetLastError();
        const DWORD attributes = ::GetFileAttributesW(path.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0 ||
            isLink(attributes)) {
            throw Win32Exception(E_DIRECTORY_PATH, error);
        }
    }

    std::wstring root_;
    std::set<std::wstring> known_;
};

void extractFile(const ZipArchive& archive, const Target& target, const std::wstring& path, bool overwrite,
                 const SharedProgress& progress) {
    if (isLink(::GetFileAttributesW(path.c_str()))) {
        throw Win32Exception(E_CREATE_FILE, ERROR_FILE_EXISTS);
    }
    const DWORD disposition = overwrite ? CREATE_ALWAYS : CREATE_NEW;
    const std::shared_ptr<File> file =
        File::open(path, {.access = GENERIC_WRITE, .share = 0, .disposition = disposition});
    try {
        archive.extractFurther(target.index, *file, progress);
        if (const auto time = fileTimeOf(target.date)) {
            file->setTimes(nullptr, nullptr, &*time);
        }
    } catch (...) {
        file->close();
        ::DeleteFileW(path.c_str());
        throw;
    }
    file->close();
}

}  // namespace

void extractToFolder(const ZipArchive& archive, const std::wstring& folder, const FolderExtraction& options,
                     const SharedProgress& progress) {
    const Plan plan = planOf(*archive.entries(), options.maxSize);
    if (progress) {
        progress->start(plan.size);
    }
    FolderMaker folders(folder);
    for (const Target& target : plan.targets) {
        Stream::throwIfCanceled(progress);
        const std::wstring path = folders.make(target.folders);
        if (!target.file.empty()) {
            extractFile(archive, target, join(path, target.file), options.overwrite, progress);
        }
    }
    Stream::throwIfCanceled(progress);
}

}  // namespace Corvane::Compression
