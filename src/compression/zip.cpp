#include "compression/zip.h"

#include "compression/sink.h"
#include "compression/unzip_file.h"
#include "compression/zip_file.h"
#include "core/errors.h"
#include "core/exception.h"
#include "core/log.h"
#include "stream/output_range.h"
#include "stream/stream_loop.h"

#include <utility>

namespace Corvane::Compression {
namespace {

using namespace detail;

ZipFile::Entry onlyEntry(std::uint64_t size, int mode) {
    return {.name = "file", .date = {}, .size = size, .level = zlibLevel(mode)};
}

void selectNumber(UnZipFile& archive, unsigned numFile) {
    for (unsigned number = 1; number < numFile && archive.hasEntry(); ++number)
        archive.next();
    if (!archive.hasEntry())
        throw Exception(E_UNZIP_OUT_OF_RANGE);
}

}  // namespace

void zip(std::span<const std::uint8_t> input, Bytes& output, int mode) {
    writeLog(LogLevel::debug, L"Corvane::Compression::zip", L"[in] size: ", input.size(), L" [in] mode: ",
             mode);
    Bytes result;
    ZipFile archive = ZipFile::open(bytesStorage(result));
    archive.openEntry(onlyEntry(input.size(), mode), E_ZIP_OPEN);
    archive.write(input);
    archive.closeEntry();
    archive.close();
    output = std::move(result);
}

void unzip(std::span<const std::uint8_t> input, Bytes& output, unsigned numFile) {
    writeLog(LogLevel::debug, L"Corvane::Compression::unzip", L"[in] size: ", input.size(), L" [in] file: ",
             numFile);
    UnZipFile archive = UnZipFile::open(spanStorage(input));
    selectNumber(archive, numFile);
    Bytes result = roomFor(archive.entry(E_UNZIP), input.size());
    archive.extract(appendTo(result));
    output = std::move(result);
}

void zipFileAsync(Stream::IBinaryStream& input, Stream::IBinaryStream& output, const SharedProgress& progress,
                  int mode) {
    writeLog(LogLevel::debug, L"Corvane::Compression::zipFileAsync", L"[in] input: ", input,
             L" [in] output: ", output, L" [in] mode: ", mode);
    Stream::expectSeparate(input, output, E_ZIP_OPEN);
    Stream::throwIfCanceled(progress);
    Stream::OutputRange range(output);
    ZipFile archive = ZipFile::open(streamStorage(output, range.begin(), [&] { range.noteWriting(); }));
    const Stream::State state = input.state();
    archive.openEntry(onlyEntry(state.size - state.position, mode), E_ZIP_OPEN);
    Stream::forEachBlock(input, pieceSize, progress,
                         [&](std::span<const std::uint8_t> block, bool) { archive.write(block); });
    archive.closeEntry();
    archive.close();
    range.commit();
}

void unzipFileAsync(Stream::IBinaryStream& input, Stream::IBinaryStream& output, unsigned numFile,
                    const SharedProgress& progress) {
    writeLog(LogLevel::debug, L"Corvane::Compression::unzipFileAsync", L"[in] input: ", input,
             L" [in] output: ", output, L" [in] file: ", numFile);
    Stream::expectSeparate(input, output, E_ZIP_OPEN);
    Stream::OutputRange range(output);
    UnZipFile archive = UnZipFile::open(input);
    selectNumber(archive, numFile);
    if (progress)
        progress->start(archive.entry(E_UNZIP).size);
    archive.extract([&](std::span<const std::uint8_t> piece) {
        Stream::throwIfCanceled(progress);
        range.stream().write(piece);
        if (progress)
            progress->add(piece.size());
    });
    Stream::throwIfCanceled(progress);
    range.commit();
}

}  // namespace Corvane::Compression
