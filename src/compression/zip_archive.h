// A zip archive of any number of entries in a stream: listing, extracting, adding.
//
// Entries are identified by their index in the archive's directory, from 0, or by name. Names are UTF-8 with
// "/" between folders; how those of old archives are read is told in zip_name.h. Names written are marked as
// UTF-8 unless they are ASCII.
#pragma once

#include "binary/bytes.h"
#include "compression/mode.h"
#include "compression/zip_entry.h"
#include "compression/zip_places.h"
#include "core/lock.h"
#include "core/progress.h"
#include "stream/binary_stream.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Corvane::Compression {

namespace detail {
class ZipFile;
struct ZipTail;
}  // namespace detail

using ZipEntries = std::vector<ZipEntry>;
using SharedZipEntries = std::shared_ptr<const ZipEntries>;

// The most that may come out of an archive, against a small one that says it holds terabytes.
inline constexpr std::uint64_t unlimitedSize = ~std::uint64_t{0};

// Adds entries within ZipArchive::update().
class ZipWriter {
public:
    // The content is what lies from the position of `input` to its end, read on as `progress`, already
    // started, says. `name` may have "\" between folders, and "." for one. Throws Exception
    // E_ZIP_OPEN_NEW_FILE for a name that could not be extracted again, alone or beside those that the
    // archive has, in whatever case; for content under the name of a folder; E_ZIP, E_CANCELED, what the
    // streams throw.
    void addFile(std::string_view name, const ZipDate& date, Stream::IBinaryStream& input,
                 const SharedProgress& progress);
    void addFile(std::string_view name, const ZipDate& date, std::span<const std::uint8_t> content,
                 const SharedProgress& progress = nullptr);

    // An entry for a folder itself; files need none for theirs.
    void addFolder(std::string_view name, const ZipDate& date);

private:
    friend class ZipArchive;
    ZipWriter(detail::ZipFile& file, detail::ZipPlaces& places) : file_(file), places_(places) {}

    void open(std::string name, const ZipDate& date, std::uint64_t size);

    detail::ZipFile& file_;
    detail::ZipPlaces& places_;
    std::vector<std::string> added_;
};

// Any thread may call any function. Several entries may be extracted at the same time. Adding waits until no
// extraction is running, and extractions wait while something is added; entries() never waits for either. The
// position of the stream changes. When the stream or the archive has been closed, every function except
// close() throws Exception E_ZIP_ARCHIVE_STREAM_DISPOSE. Other exceptions of the stream are passed on.
class ZipArchive {
public:
    // An empty stream is an archive without entries, to be filled. Throws Exception E_ZIP_OPEN for what is
    // neither empty nor an archive; E_ZIP_NEXT_FILE, E_ZIP_FILE_INFO for a broken directory.
    explicit ZipArchive(std::shared_ptr<Stream::IBinaryStream> stream);
    ~ZipArchive();
    ZipArchive(const ZipArchive&) = delete;
    ZipArchive& operator=(const ZipArchive&) = delete;

    // The directory as it is now; later changes make a new list.
    SharedZipEntries entries() const;

    // The index of an entry by its exact name; that of a folder may be given without "/" at the end. Throws
    // Exception E_ZIP_GET_ENTRY when there is none.
    std::size_t find(std::string_view name) const;

    // The content of one entry. Throws Exception E_UNZIP_OUT_OF_RANGE, E_BINARY_MAX_SIZE above `maxSize`,
    // E_CANCELED, and what UnZipFile::extract throws; nothing is returned then.
    Bytes extract(std::size_t index, std::uint64_t maxSize = unlimitedSize,
                  const SharedProgress& progress = nullptr) const;

    // The same to the position of a stream, which then ends behind the content; a failure leaves it as
    // OutputRange says.
    void extract(std::size_t index, Stream::IBinaryStream& output, std::uint64_t maxSize,
                 const SharedProgress& progress) const;

    // The same without a limit and without starting `progress`, for one of several entries. What was written
    // stays on a failure.
    void extractFurther(std::size_t index, Stream::IBinaryStream& output,
                        const SharedProgress& progress) const;

    // Adds entries at the end, all that `work` adds or, when it throws, none: the archive is then again what
    // it was. Another one's changes to the stream since the last call are taken in. Throws what `work`
    // throws, Exception E_ZIP_OPEN, E_ZIP.
    void update(const std::function<void(ZipWriter&)>& work);

    // One entry from bytes, or from a stream as ZipWriter::addFile takes it. `progress` is started here.
    void add(std::string_view name, const ZipDate& date, std::span<const std::uint8_t> content,
             const SharedProgress& progress = nullptr);
    void add(std::string_view name, const ZipDate& date, Stream::IBinaryStream& input,
             const SharedProgress& progress);

    // Where the archive lies.
    std::shared_ptr<Stream::IBinaryStream> openStream() const;

    // Lets go of the stream, which stays open.
    void close();

private:
    void start(std::size_t index, std::uint64_t maxSize, const SharedProgress& progress) const;
    void extractTo(std::size_t index, const std::function<void(std::span<const std::uint8_t>)>& sink,
                   const SharedProgress& progress) const;

    std::unique_ptr<detail::ZipTail> takeTail(Stream::IBinaryStream& stream);
    void append(ZipEntries added, const std::function<void()>& commit);

    mutable SharedMutex content_;  // shared by those who read the stream, owned by one who changes it
    // What the last change left, so that the next one need not read it. Owned with content_.
    std::unique_ptr<detail::ZipTail> tail_;
    mutable SharedMutex state_;  // guards what follows
    std::shared_ptr<Stream::IBinaryStream> stream_;
    std::shared_ptr<ZipEntries> entries_;  // changed only while nobody else holds it
};

}  // namespace Corvane::Compression
