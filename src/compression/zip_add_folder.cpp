#include "compression/zip_disk_date.h"
#include "compression/zip_folder.h"
#include "core/text.h"
#include "stream/file.h"
#include "stream/file_system.h"
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

// What is to be added, each folder before what lies in it.
class SourceList {
public:
    SourceList(const std::wstring& path, const std::string& prefix, const SharedProgress& progress) {
        const std::string folder = prefix.empty() || prefix.ends_with('/') ? prefix : prefix + '/';
        if (!FileSystem::folderExists(path)) {
            add(path, folder, FileSystem::find(path));
            return;
        }
        addContents(path, folder, progress);
        std::size_t next = 0;
        while (next < sources_.size()) {
            // A copy: adding moves the sources.
            const Source source = sources_[next++];
            if (source.folder) {
                addContents(source.path, source.name, progress);
            }
        }
    }

    const std::vector<Source>& sources() const noexcept { return sources_; }
    std::uint64_t size() const noexcept { return size_; }

private:
    void addContents(const std::wstring& folder, const std::string& prefix, const SharedProgress& progress) {
        for (const FileSystem::Entry& entry : FileSystem::list(folder, L"*")) {
            Stream::throwIfCanceled(progress);
            if (!entry.link) {
                add(FileSystem::join(folder, entry.name), prefix, entry);
            }
        }
    }

    void add(const std::wstring& path, const std::string& prefix, const FileSystem::Entry& entry) {
        const bool folder = (entry.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        const std::uint64_t size = folder ? 0 : entry.size;
        const std::string name = prefix + toUtf8(entry.name);
        sources_.push_back({path, folder ? name + '/' : name, folder, size, zipDateOf(entry.written)});
        size_ += size;
    }

    std::vector<Source> sources_;
    std::uint64_t size_ = 0;
};

}  // namespace

void addFromDisk(ZipArchive& archive, const std::wstring& path, const std::string& prefix,
                 const SharedProgress& progress) {
    const SourceList list(path, prefix, progress);
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
