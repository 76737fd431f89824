// gzip (RFC 1952), in memory and from stream to stream.
//
// What is written is one member with the plainest header: no name, no comment, no time.
//
// What is read may be several members one after another, whose contents are joined (RFC 1952, section 2.2).
// Whatever follows a complete member and does not begin with the bytes 1F 8B, padding for example, is
// ignored, as the gzip program ignores it.
#pragma once

#include "binary/bytes.h"
#include "compression/mode.h"
#include "core/progress.h"
#include "stream/binary_stream.h"

#include <cstdint>
#include <span>

namespace Corvane::Compression {

// Replaces `output` with the compressed input. On a failure it stays as it was: std::bad_alloc, Exception
// E_GZIP_OPEN when zlib cannot begin, E_GZIP.
void gzip(std::span<const std::uint8_t> input, Bytes& output, int mode = defaultMode);

// Replaces `output` with the content of the members. On a failure it stays as it was: std::bad_alloc,
// Exception E_UNGZIP_BAD when the input is not gzip, is cut off, or does not agree with its checksum or
// length; E_UNGZIP when zlib fails otherwise.
void ungzip(std::span<const std::uint8_t> input, Bytes& output);

// The same from the position of one stream to the position of another one, with a fixed amount of memory. The
// output then ends behind the result; on a failure it ends where the result would have begun. Run on a
// worker: `progress` counts the input. Throws as above, E_CANCELED, and what the streams throw. One stream
// for both is E_GZIP_OPEN or E_UNGZIP.
void gzipFileAsync(Stream::IBinaryStream& input, Stream::IBinaryStream& output,
                   const SharedProgress& progress, int mode = defaultMode);
void ungzipFileAsync(Stream::IBinaryStream& input, Stream::IBinaryStream& output,
                     const SharedProgress& progress);

}  // namespace Corvane::Compression
