#include "compression/zip_archive.h"

#include "compression/unzip_file.h"
#include "compression/zip_file.h"
#include "compression/zip_name.h"
#include "compression/zip_rollback.h"
#include "core/errors.h"
#include "core/exception.h"
#include "core/log.h"
#include "core/utf8.h"
#include "stream/output_range.h"
#include "stream/stream_loop.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <mutex>
#include <new>
#include <shared_mutex>
#include <utility>

namespace Corvane::Compression {
namespace {

using namespace detail;

constexpr wchar_t extractName[] = L"Corvane::Compression::ZipArchive::extract";
constexpr wchar_t addName[] = L"Corvane::Compression::ZipArchive::add";

const ZipEntry& entryAt(const ZipEntries& entries, std::size_t index) {
    if (index >= entries.size())
        throw Exception(E_UNZIP_OUT_OF_RANGE);
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
    if (!directory)
        name.pop_back();
    return name;
}

// From the current entry of `file` on.
ZipEntries readEntries(UnZipFile& file) {
    ZipEntries entries;
    for (; file.hasEntry(); file.next())
        entries.push_back(file.entry(E_ZIP_FILE_INFO));
    return entries;
}

// What is in an archive, and where its directory lies, both as found by reading it.
struct Found {
    ZipEntries entries;
    ZipEnd end;
};

Found readArchive(Stream::IBinaryStream& stream) {
    if (stream.state().size == 0)
        return {};
    UnZipFile file = UnZipFile::open(stream);
    Found found{readEntries(file), file.end()};
    if (!file.isAtEnd())
        throw Exception(E_ZIP_NEXT_FILE);
    found.end.size = file.position();
    found.end.entries = found.entries.size();
    return found;
}

Bytes readTo(Stream::IBinaryStream& stream, std::uint64_t begin, std::uint64_t end) {
    const SharedBytes bytes =
        stream.seekAndRead(static_cast<std::int64_t>(begin), static_cast<std::size_t>(end - begin));
    if (bytes->size() != end - begin)
        throw Exception(E_ZIP_OPEN);
    return *bytes;
}

bool sameNames(const ZipEntries& entries, const std::vector<std::string>& names) {
    return std::ranges::equal(entries, names, {}, &ZipEntry::name);
}

}  // namespace

// What stands behind the last entry of an archive, and the places that its entries take.
struct detail::ZipTail {
    ZipEnd end;
    Bytes directory;
    Bytes behind;  // to the end of the stream
    ZipPlaces places;

    ZipTail(Stream::IBinaryStream& stream, const Found& found)
        : end(found.end),
          directory(readTo(stream, begin(), begin() + end.size)),
          behind(readTo(stream, begin() + end.size, stream.state().size)) {
        // Those of other programs may be in each other's way, or have names that nothing added can meet.
        for (const ZipEntry& entry : found.entries) {
            if (const auto parts = zipNameParts(entry.name))
                places.put(*parts, entry.directory);
        }
    }

    std::uint64_t begin() const noexcept { return end.begin + end.directory; }

    bool isIn(Stream::IBinaryStream& stream) const {
        const std::uint64_t at = begin() + directory.size();
        return stream.state().size == at + behind.size() && readTo(stream, at, at + behind.size()) == behind;
    }

    void grow(ZipFile::Closed closed) {
        end = std::move(closed.end);
        directory.insert(directory.end(), closed.directory.begin(), closed.directory.end());
        behind = endRecords(end);
    }
};

ZipArchive::ZipArchive(std::shared_ptr<Stream::IBinaryStream> stream) : stream_(std::move(stream)) {
    writeLog(LogLevel::debug, L"Corvane::Compression::ZipArchive", L"[in] stream: ", *stream_);
    entries_ = std::make_shared<ZipEntries>(readArchive(*openStream()).entries);
}

ZipArchive::~ZipArchive() = default;

std::shared_ptr<Stream::IBinaryStream> ZipArchive::openStream() const {
    std::shared_ptr<Stream::IBinaryStream> stream;
    {
        const std::lock_guard lock(state_);
        stream = stream_;
    }
    if (!stream)
        throw Exception(E_ZIP_ARCHIVE_STREAM_DISPOSE);
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
    writeLog(LogLevel::debug, L"Corvane::Compression::ZipArchive::find", L"[in] name: ", fromUtf8(name));
    std::string wanted(name);
    std::replace(wanted.begin(), wanted.end(), '\\', '/');
    const SharedZipEntries list = entries();
    const auto found = std::find_if(list->begin(), list->end(), [&](const ZipEntry& entry) {
        return entry.name == wanted || (entry.directory && entry.name == wanted + '/');
    });
    if (found == list->end())
        throw Exception(E_ZIP_GET_ENTRY);
    return static_cast<std::size_t>(found - list->begin());
}

void ZipArchive::start(std::size_t index, std::uint64_t maxSize, const SharedProgress& progress) const {
    const SharedZipEntries list = entries();
    const ZipEntry& entry = entryAt(*list, index);
    if (entry.size > maxSize)
        throw Exception(E_BINARY_MAX_SIZE);
    if (progress)
        progress->start(entry.size);
}

void ZipArchive::extractTo(std::size_t index, const Sink& sink, const SharedProgress& progress) const {
    const std::shared_lock lock(content_);
    const auto stream = openStream();  // stays, whoever closes the archive meanwhile
    UnZipFile file = UnZipFile::open(*stream);
    // Looked up only now: adding entries moves the directory.
    file.select(entryAt(*entries(), index).directoryPosition);
    if (!file.hasEntry())
        throw Exception(E_ZIP_FILE_INFO);
    file.extract([&](std::span<const std::uint8_t> piece) {
        Stream::throwIfCanceled(progress);
        sink(piece);
        if (progress)
            progress->add(piece.size());
    });
    Stream::throwIfCanceled(progress);
}

Bytes ZipArchive::extract(std::size_t index, std::uint64_t maxSize, const SharedProgress& progress) const {
    writeLog(LogLevel::debug, extractName, L"[in] index: ", index, L" [in] size limit: ", maxSize);
    start(index, maxSize, progress);
    Bytes content = roomFor(entryAt(*entries(), index), openStream()->state().size);
    extractTo(index, appendTo(content), progress);
    return content;
}

void ZipArchive::extract(std::size_t index, Stream::IBinaryStream& output, std::uint64_t maxSize,
                         const SharedProgress& progress) const {
    writeLog(LogLevel::debug, extractName, L"[in] index: ", index, L" [in] output: ", output,
             L" [in] size limit: ", maxSize);
    // Before the range, whose end would cut the archive.
    if (openStream().get() == &output)
        throw Exception(E_ZIP_GET_ENTRY);
    start(index, maxSize, progress);
    Stream::OutputRange range(output);
    extractTo(index, range.sink(), progress);
    range.commit();
}

void ZipArchive::extractFurther(std::size_t index, Stream::IBinaryStream& output,
                                const SharedProgress& progress) const {
    const auto write = [&](std::span<const std::uint8_t> piece) { output.write(piece); };
    extractTo(index, write, progress);
}

// The one that was kept, if the stream is as it was left.
std::unique_ptr<ZipTail> ZipArchive::takeTail(Stream::IBinaryStream& stream) {
    auto tail = std::exchange(tail_, nullptr);
    if (!tail || !tail->isIn(stream)) {
        Found found = readArchive(stream);
        tail = std::make_unique<ZipTail>(stream, found);
        auto present = std::make_shared<ZipEntries>(std::move(found.entries));
        const std::lock_guard lock(state_);
        entries_ = std::move(present);
    }
    return tail;
}

void ZipArchive::update(const std::function<void(ZipWriter&)>& work) {
    const std::unique_lock lock(content_);
    const auto stream = openStream();
    auto tail = takeTail(*stream);
    ZipRollback rollback(*stream, tail->begin(), tail->directory, tail->behind);
    ZipFile file = ZipFile::open(rollback.storage(), tail->end, tail->directory);
    ZipWriter writer(file, tail->places);
    work(writer);
    ZipFile::Closed closed = file.close();
    // Whatever the archive is like: what was added must be found in it, or nothing was.
    UnZipFile grown = UnZipFile::open(*stream);
    grown.select(tail->directory.size());
    ZipEntries added = readEntries(grown);
    if (!sameNames(added, writer.added_))
        throw Exception(E_ZIP);
    append(std::move(added), [&] { rollback.commit(closed.size); });
    try {
        tail->grow(std::move(closed));
        tail_ = std::move(tail);
    } catch (const std::bad_alloc&) {
        // The next change reads it.
    }
}

// After `commit` nothing can fail any more.
void ZipArchive::append(ZipEntries added, const std::function<void()>& commit) {
    const std::lock_guard lock(state_);
    const std::size_t size = entries_->size() + added.size();
    if (entries_.use_count() > 1)
        entries_ = std::make_shared<ZipEntries>(*entries_);
    // What others did with it before they let it go has happened.
    std::atomic_thread_fence(std::memory_order_acquire);
    if (entries_->capacity() < size)
        entries_->reserve(std::max(size, 2 * entries_->capacity()));
    commit();
    std::ranges::move(added, std::back_inserter(*entries_));
}

void ZipArchive::add(std::string_view name, const ZipDate& date, std::span<const std::uint8_t> content,
                     const SharedProgress& progress) {
    writeLog(LogLevel::debug, addName, L"[in] name: ", fromUtf8(name), L" [in] size: ", content.size());
    if (progress)
        progress->start(content.size());
    update([&](ZipWriter& writer) { writer.addFile(name, date, content, progress); });
}

void ZipArchive::add(std::string_view name, const ZipDate& date, Stream::IBinaryStream& input,
                     const SharedProgress& progress) {
    writeLog(LogLevel::debug, addName, L"[in] name: ", fromUtf8(name), L" [in] input: ", input);
    if (progress) {
        const Stream::State state = input.state();
        progress->start(state.size - state.position);
    }
    if (openStream().get() == &input)
        throw Exception(E_ZIP_OPEN_NEW_FILE);
    update([&](ZipWriter& writer) { writer.addFile(name, date, input, progress); });
}

void ZipArchive::close() {
    const std::lock_guard lock(state_);
    stream_.reset();
}

void ZipWriter::open(std::string name, const ZipDate& date, std::uint64_t size) {
    std::replace(name.begin(), name.end(), '\\', '/');
    const bool directory = name.ends_with('/');
    const auto parts = zipNameParts(name);
    if (!parts || parts->empty() || (directory && size != 0))
        throw ZipException(E_ZIP_OPEN_NEW_FILE, badName);
    name = joined(*parts, directory);
    if (name.size() > longestEntryName)
        throw ZipException(E_ZIP_OPEN_NEW_FILE, badName);
    if (places_.put(*parts, directory) != ZipPlaces::Meeting::nothing)
        throw ZipException(E_ZIP_OPEN_NEW_FILE, takenName);
    added_.push_back(std::move(name));
    file_.openEntry({.name = added_.back(), .date = date, .size = size}, E_ZIP_OPEN_NEW_FILE);
}

void ZipWriter::addFile(std::string_view name, const ZipDate& date, Stream::IBinaryStream& input,
                        const SharedProgress& progress) {
    const Stream::State state = input.state();
    open(std::string(name), date, state.size - state.position);
    Stream::forEachFurtherBlock(input, pieceSize, progress,
                                [this](std::span<const std::uint8_t> block, bool) { file_.write(block); });
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
        if (progress)
            progress->add(piece.size());
    }
    Stream::throwIfCanceled(progress);
    file_.closeEntry();
}

void ZipWriter::addFolder(std::string_view name, const ZipDate& date) {
    open(name.ends_with('/') || name.ends_with('\\') ? std::string(name) : std::string(name) + '/', date, 0);
    file_.closeEntry();
}

}  // namespace Corvane::Compression
