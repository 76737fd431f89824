// Checksums and digests of what lies from a stream's position to its end, one block in memory at a time.
#pragma once

#include "core/progress.h"
#include "stream/binary_stream.h"

namespace Corvane::Stream {

// Leave the position at the end. Throw Exception E_CANCELED and what the stream throws.
std::uint32_t getCrc32(IBinaryStream& stream, const SharedProgress& progress);
Bytes getMd5(IBinaryStream& stream, const SharedProgress& progress);
Bytes getSha256(IBinaryStream& stream, const SharedProgress& progress);

}  // namespace Corvane::Stream
