#include "stream/digest.h"

#include "binary/crc32.h"
#include "binary/md5.h"
#include "binary/sha256.h"
#include "stream/stream_loop.h"

namespace Corvane::Stream {
namespace {

template <class Digest>
Bytes digestOf(IBinaryStream& stream, const SharedProgress& progress) {
    Digest digest;
    forEachBlock(stream, blockSize, progress,
                 [&](std::span<const std::uint8_t> block) { digest.update(block); });
    const auto value = digest.finish();
    return Bytes(value.begin(), value.end());
}

}  // namespace

std::uint32_t getCrc32(IBinaryStream& stream, const SharedProgress& progress) {
    std::uint32_t crc = 0;
    forEachBlock(stream, blockSize, progress,
                 [&](std::span<const std::uint8_t> block) { crc = Binary::getCrc32(block, crc); });
    return crc;
}

Bytes getMd5(IBinaryStream& stream, const SharedProgress& progress) {
    return digestOf<Binary::MD5>(stream, progress);
}

Bytes getSha256(IBinaryStream& stream, const SharedProgress& progress) {
    return digestOf<Binary::SHA256>(stream, progress);
}

}  // namespace Corvane::Stream
