#include "compression/zip_archive.h"

#include "compression/output_range.h"
#include "compression/unzip_file.h"
#include "compression/zip_file.h"
#include "compression/zip_name.h"
#include "compression/zip_rollback.h"
#include "core/errors.h"
#include "core/exception.h"
#include "stream/stream_loop.h"

#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <utility>

namespace Corvane::Compression {
namespace {

using namespace detail;

const ZipEntry& entryAt(const ZipEntries& entries, std::size_t index) {
    if (index >= entries.size()) {
        throw Exception(E_UNZIP_OUT_OF_RANGE);
    }
    return entries[index];
}

// 16 bits hold it (APPNOTE.TXT 4.4.10).
constexpr std::size_t longestEntryName = 0xFFFF;

std::string joined(const std::vector<std::string>& parts, bool directory) {
    std::string name;
    for (const std::string& part : parts) {
        name += part;
        name += '/';
    }
    if (!directory) {
        name.pop_back();
    }
    return name;
}

SharedZipEntries readEntries(Stream::IBinaryStream& stream) {
    auto entries = std::make_shared<ZipEntries>();
    if (stream.state().size == 0) {
        return entries;
    }
    for (UnZipFile file = UnZipFile::open(stream); file.hasEntry(); file.next()) {
        entries->push_back(file.entry());
    }
    return entries;
}

}  // namespace

ZipArchive::ZipArchive(std::shared_ptr<Stream::IBinaryStream> stream) : stream_(std::move(stream)) {
    entries_ = readEntries(*openStream());
}

ZipArchive::~ZipArchive() = default;

std::shared_ptr<Stream::IBinaryStream> ZipArchive::openStream() const {
    std::shared_ptr<Stream::IBinaryStream> stream;
    {
        const std::lock_guard lock(state_);
        stream = stream_;
    }
    if (!stream) {
        throw Exception(E_ZIP_ARCHIVE_STREAM_DISPOSE);
    }
    try {
        stream->state();
    } catch (const Stream::ClosedStreamException&) {
        throw Exception(E_ZIP_ARCHIVE_STREAM_DISPOSE);
    }
    return stream;
}

SharedZipEntries ZipArchive::entries() const {
    openStream();
    const std::lock_guard lock(state_);
    return entries_;
}

std::size_t ZipArchive::find(std::string_view name) const {
    std::string wanted(name);
    std::replace(wanted.begin(), wanted.end(), '\\', '/');
    const SharedZipEntries list = entries();
    const auto found = std::find_if(list->begin(), list->end(), [&](const ZipEntry& entry) {
        return entry.name == wanted || (entry.directory && entry.name == wanted + '/');
    });
    if (found == list->end()) {
        throw Exception(E_ZIP_GET_ENTRY);
    }
    return static_cast<std::size_t>(found - list->begin());
}

void ZipArchive::start(std::size_t index, std::uint64_t maxSize, const SharedProgress& progress) const {
    const SharedZipEntries list = entries();
    const ZipEntry& entry = entryAt(*list, index);
    if (entry.size > maxSize) {
        throw Exception(E_BINARY_MAX_SIZE);
    }
    if (progress) {
        progress->start(entry.size);
    }
}

void ZipArchive::extractTo(std::size_t index, const Sink& sink, const SharedProgress& progress) const {
    const std::shared_lock lock(content_);
    const auto stream = openStream();  // stays, whoever closes the archive meanwhile
    UnZipFile file = UnZipFile::open(*stream);
    // Looked up only now: adding entries moves the directory.
    file.select(entryAt(*entries(), index));
    file.extract([&](std::span<const std::uint8_t> piece) {
        Stream::throwIfCanceled(progress);
        sink(piece);
        if (progress) {
            progress->add(piece.size());
        }
    });
    Stream::throwIfCanceled(progress);
}

Bytes ZipArchive::extract(std::size_t index, std::uint64_t maxSize, const SharedProgress& progress) const {
    start(index, maxSize, progress);
    Bytes content = roomFor(entryAt(*entries(), index), openStream()->state().size);
    extractTo(index, appendTo(content), progress);
    return content;
}

void ZipArchive::extract(std::size_t index, Stream::IBinaryStream& output, std::uint64_t maxSize,
                         const SharedProgress& progress) const {
    // Before the range, whose end would cut the archive.
    if (openStream().get() == &output) {
        throw Exception(E_ZIP_GET_ENTRY);
    }
    start(index, maxSize, progress);
    OutputRange range(output);
    extractTo(index, range.sink(), progress);
    range.commit();
}

void ZipArchive::extractFurther(std::size_t index, Stream::IBinaryStream& output,
                                const SharedProgress& progress) const {
    const auto write = [&](std::span<const std::uint8_t> piece) { output.write(piece); };
    extractTo(index, write, progress);
}

void ZipArchive::update(const std::function<void(ZipWriter&)>& work) {
    const std::unique_lock lock(content_);
    const auto stream = openStream();
    const SharedZipEntries present = entries();
    ZipRollback rollback(*stream);
    const bool isNew = stream->state().size == 0;
    ZipFile file = ZipFile::open(rollback.storage(), isNew ? ZipFile::Mode::create : ZipFile::Mode::append,
                                 present->size());
    ZipWriter writer(file, *present);
    work(writer);
    const std::uint64_t size = file.close();
    SharedZipEntries grown = readEntries(*stream);
    // Whatever the archive is like: what was added must be found in it, or nothing was.
    if (grown->size() != file.entryCount()) {
        throw Exception(E_ZIP);
    }
    rollback.commit(size);
    const std::lock_guard stateLock(state_);
    entries_ = std::move(grown);
}

void ZipArchive::add(std::string_view name, const ZipDate& date, std::span<const std::uint8_t> content,
                     const SharedProgress& progress) {
    if (progress) {
        progress->start(content.size());
    }
    update([&](ZipWriter& writer) { writer.addFile(name, date, content, progress); });
}

void ZipArchive::add(std::string_view name, const ZipDate& date, Stream::IBinaryStream& input,
                     const SharedProgress& progress) {
    if (progress) {
        const Stream::State state = input.state();
        progress->start(state.size - state.position);
    }
    if (openStream().get() == &input) {
        throw Exception(E_ZIP_OPEN_NEW_FILE);
    }
    update([&](ZipWriter& writer) { writer.addFile(name, date, input, progress); });
}

void ZipArchive::close() {
    const std::lock_guard lock(state_);
    stream_.reset();
}

ZipWriter::ZipWriter(ZipFile& file, const ZipEntries& present) : file_(file) {
    // Those of other programs may be in each other's way, or have names that nothing added can meet.
    for (const ZipEntry& entry : present) {
        if (const auto parts = zipNameParts(entry.name)) {
            places_.put(*parts, entry.directory);
        }
    }
}

void ZipWriter::open(std::string name, const ZipDate& date, std::uint64_t size) {
    std::replace(name.begin(), name.end(), '\\', '/');
    const bool directory = name.ends_with('/');
    const auto parts = zipNameParts(name);
    if (!parts || parts->empty() || (directory && size != 0)) {
        throw ZipException(E_ZIP_OPEN_NEW_FILE, badName);
    }
    name = joined(*parts, directory);
    if (name.size() > longestEntryName) {
        throw ZipException(E_ZIP_OPEN_NEW_FILE, badName);
    }
    if (places_.put(*parts, directory) != ZipPlaces::Meeting::nothing) {
        throw ZipException(E_ZIP_OPEN_NEW_FILE, takenName);
    }
    file_.openEntry({.name = std::move(name), .date = date, .size = size}, E_ZIP_OPEN_NEW_FILE);
}

void ZipWriter::addFile(std::string_view name, const ZipDate& date, Stream::IBinaryStream& input,
                        const SharedProgress& progress) {
    const Stream::State state = input.state();
    open(std::string(name), date, state.size - state.position);
    Stream::forEachFurtherBlock(input, pieceSize, progress,
                                [this](std::span<const std::uint8_t> block) { file_.write(block); });
    file_.closeEntry();
}

void ZipWriter::addFile(std::string_view name, const ZipDate& date, std::span<const std::uint8_t> content,
                        const SharedProgress& progress) {
    open(std::string(name), date, content.size());
    while (!content.empty()) {
        Stream::throwIfCanceled(progress);
        const auto piece = content.first(std::min(content.size(), pieceSize));
        file_.write(piece);
        content = content.subspan(piece.size());
        if (progress) {
            progress->add(piece.size());
        }
    }
    Stream::throwIfCanceled(progress);
    file_.closeEntry();
}

void ZipWriter::addFolder(std::string_view name, const ZipDate& date) {
    open(name.ends_with('/') || name.ends_with('\\') ? std::string(name) : std::string(name) + '/', date, 0);
    file_.closeEntry();
}

}  // namespace Corvane::Compression
