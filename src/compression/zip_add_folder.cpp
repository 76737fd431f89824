#include "compression/named_exception.h"
#include "compression/unzip_file.h"
#include "compression/zip_disk_date.h"
#include "compression/zip_folder.h"
#include "compression/zip_name.h"
#include "core/errors.h"
#include "core/log.h"
#include "core/system_exception.h"
#include "core/wide_text.h"
#include "files/file.h"
#include "files/file_system.h"
#include "stream/stream_loop.h"

#include <algorithm>
#include <memory>
#include <optional>
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

// Others may be writing the file.
constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// The file that an archive lies in, if it is one: it cannot be packed into itself.
class OwnFile {
public:
    explicit OwnFile(const ZipArchive& archive) {
        const auto stream = archive.openStream();
        if (const auto* file = dynamic_cast<const File*>(stream.get()))
            identity_ = file->identity();
    }

    // Asks for no access, which no other handle can refuse.
    bool isAt(const std::wstring& path) const {
        return identity_ && !FileSystem::folderExists(path) &&
               is(*File::open(path, {.access = 0, .share = shareAll}));
    }

    // The file at a path, for reading; null when it is this one.
    std::shared_ptr<File> openOther(const std::wstring& path) const {
        std::shared_ptr<File> file;
        try {
            file = File::open(path, {.share = shareAll});
        } catch (const Win32Exception&) {
            if (isAt(path))
                return nullptr;
            throw;
        }
        return is(*file) ? nullptr : file;
    }

private:
    bool is(const File& file) const { return identity_ && file.identity() == *identity_; }

    std::optional<FileIdentity> identity_;
};

std::string folderPrefix(std::string prefix) {
    std::replace(prefix.begin(), prefix.end(), '\\', '/');
    return prefix.empty() || prefix.ends_with('/') ? prefix : prefix + '/';
}

// What is to be added, each folder before what lies in it.
class SourceList {
public:
    SourceList(const std::wstring& path, const std::string& prefix, const SharedProgress& progress) {
        if (!FileSystem::folderExists(path)) {
            add(path, prefix, FileSystem::find(path));
            return;
        }
        addContents(path, prefix, progress);
        std::size_t next = 0;
        while (next < sources_.size()) {
            // A copy: adding moves the sources.
            const Source source = sources_[next++];
            if (source.folder)
                addContents(source.path, source.name, progress);
        }
    }

    const std::vector<Source>& sources() const noexcept { return sources_; }
    std::uint64_t size() const noexcept { return size_; }

private:
    void addContents(const std::wstring& folder, const std::string& prefix, const SharedProgress& progress) {
        const auto entries = naming(folder, [&] { return FileSystem::list(folder, L"*"); });
        for (const FileSystem::Entry& entry : entries) {
            Stream::throwIfCanceled(progress);
            const std::wstring path = FileSystem::join(folder, entry.name);
            if (!entry.link)
                add(path, prefix, entry);
        }
    }

    void add(const std::wstring& path, const std::string& prefix, const FileSystem::Entry& entry) {
        const bool folder = (entry.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        const std::uint64_t size = folder ? 0 : entry.size;
        const std::string name = prefix + naming(path, [&] { return zipNameOf(entry.name); });
        sources_.push_back({path, folder ? name + '/' : name, folder, size, zipDateOf(entry.written)});
        size_ += size;
    }

    std::vector<Source> sources_;
    std::uint64_t size_ = 0;
};

void addSource(ZipWriter& writer, const Source& source, const OwnFile& own, const SharedProgress& progress) {
    if (source.folder)
        writer.addFolder(source.name, source.date);
    else if (const auto file = own.openOther(source.path))
        writer.addFile(source.name, source.date, *file, progress);
    else if (progress)
        progress->add(source.size);
}

// Adds it; what was wrong names the source, unless it was the archive.
void addNamed(ZipWriter& writer, const Source& source, const OwnFile& own, const ZipArchive& archive,
              const SharedProgress& progress) {
    try {
        const auto add = [&] { addSource(writer, source, own, progress); };
        // Only the archive is written.
        naming(source.path, add, E_FILE_WRITE.code);
    } catch (const Exception&) {
        archive.openStream();  // says when it was closed
        throw;
    }
}

}  // namespace

std::string zipNameOf(std::wstring_view name) {
    std::string text = toUtf8(name);
    if (fromUtf8(text) != name)
        throw detail::ZipException(E_ZIP_OPEN_NEW_FILE, detail::badName);
    return text;
}

void addFromDisk(ZipArchive& archive, const std::wstring& path, const std::string& prefix,
                 const SharedProgress& progress) {
    writeLog(LogLevel::debug, L"Corvane::Compression::addFromDisk", L"[in] path: ", path, L" [in] prefix: ",
             fromUtf8(prefix));
    const SourceList list(path, folderPrefix(prefix), progress);
    const OwnFile own(archive);
    if (own.isAt(path))
        throw Exception(E_ZIP_OPEN_NEW_FILE);
    if (progress)
        progress->start(list.size());
    archive.update([&](ZipWriter& writer) {
        for (const Source& source : list.sources()) {
            Stream::throwIfCanceled(progress);
            addNamed(writer, source, own, archive, progress);
        }
        Stream::throwIfCanceled(progress);
    });
}

}  // namespace Corvane::Compression
