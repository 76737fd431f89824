// A zip archive around one piece of data, in memory and from stream to stream. Archives of many entries:
// zip_archive.h. The format is PKWARE's APPNOTE.TXT with zip64.
#pragma once

#include "binary/bytes.h"
#include "compression/mode.h"
#include "core/progress.h"
#include "stream/binary_stream.h"

#include <cstdint>
#include <span>

namespace Corvane::Compression {

// Replaces `output` with an archive of one entry named "file". Its date is the earliest there is, so that
// equal inputs give equal archives. On a failure `output` stays as it was: std::bad_alloc, Exception
// E_ZIP_OPEN, E_ZIP.
void zip(std::span<const std::uint8_t> input, Bytes& output, int mode = defaultMode);

// Replaces `output` with the content of entry `numFile`, counted from 1; 0 is the first as well. On a failure
// it stays as it was: std::bad_alloc, Exception E_ZIP_OPEN when the input is no archive, E_UNZIP_OUT_OF_RANGE
// when it has fewer entries or its directory is broken before that one, E_UNZIP_BAD when the entry's local
// header disagrees with the directory or names an unsupported method, E_UNZIP when the entry is encrypted,
// cut off or damaged.
void unzip(std::span<const std::uint8_t> input, Bytes& output, unsigned numFile);

// The same with a fixed amount of memory: the archive or the content begins at the position of `output`,
// which then ends behind it; on a failure it ends where the result would have begun. What is packed begins at
// the position of `input`; an archive is the whole of it. Run on a worker: `progress` counts what is not
// compressed. Throws as above, E_CANCELED, and what the streams throw. One stream for both is E_ZIP_OPEN.
void zipFileAsync(Stream::IBinaryStream& input, Stream::IBinaryStream& output, const SharedProgress& progress,
                  int mode = defaultMode);
void unzipFileAsync(Stream::IBinaryStream& input, Stream::IBinaryStream& output, unsigned numFile,
                    const SharedProgress& progress);

}  // namespace Corvane::Compression
