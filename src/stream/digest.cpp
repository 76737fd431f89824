#include "stream/digest.h"

#include "binary/crc32.h"
#include "binary/md5.h"
#include "binary/sha256.h"
#include "core/log.h"
#include "stream/stream_loop.h"

namespace Corvane::Stream {
namespace {

// Hands the blocks of the stream to `update`, of the function of that name.
template <class Update>
void forEachBlockOf(const wchar_t* function, IBinaryStream& stream, const SharedProgress& progress,
                    Update update) {
    writeLog(LogLevel::debug, function, L"[in] stream: ", stream);
    forEachBlock(stream, blockSize, progress,
                 [&](std::span<const std::uint8_t> block, bool) { update(block); });
}

template <class Digest>
Bytes digestOf(const wchar_t* function, IBinaryStream& stream, const SharedProgress& progress) {
    Digest digest;
    forEachBlockOf(function, stream, progress,
                   [&](std::span<const std::uint8_t> block) { digest.update(block); });
    const auto value = digest.finish();
    return Bytes(value.begin(), value.end());
}

}  // namespace

std::uint32_t getCrc32(IBinaryStream& stream, const SharedProgress& progress) {
    std::uint32_t crc = 0;
    forEachBlockOf(L"Corvane::Stream::getCrc32", stream, progress,
                   [&](std::span<const std::uint8_t> block) { crc = Binary::continueCrc32(block, crc); });
    return crc;
}

Bytes getMd5(IBinaryStream& stream, const SharedProgress& progress) {
    return digestOf<Binary::MD5>(L"Corvane::Stream::getMd5", stream, progress);
}

Bytes getSha256(IBinaryStream& stream, const SharedProgress& progress) {
    return digestOf<Binary::SHA256>(L"Corvane::Stream::getSha256", stream, progress);
}

}  // namespace Corvane::Stream
