#include "compression/gzip.h"

#include "compression/inflater.h"
#include "compression/sink.h"
#include "core/errors.h"
#include "core/exception.h"
#include "core/log.h"
#include "stream/output_range.h"
#include "stream/stream_loop.h"

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <utility>

namespace Corvane::Compression {
namespace {

using namespace detail;

// 32 KiB of window and the gzip wrapper.
constexpr int gzipWindowBits = 15 + 16;
constexpr int gzipMemoryLevel = 9;

class Deflater {
public:
    explicit Deflater(int level) : piece_(pieceSize) {
        const int status =
            deflateInit2(&stream_, level, Z_DEFLATED, gzipWindowBits, gzipMemoryLevel, Z_DEFAULT_STRATEGY);
        if (status == Z_MEM_ERROR)
            throw std::bad_alloc();
        if (status != Z_OK)
            throw Exception(E_GZIP_OPEN);
        clearPiece();
    }
    ~Deflater() { deflateEnd(&stream_); }
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;

    void write(std::span<const std::uint8_t> input, const Sink& sink) {
        while (!input.empty()) {
            const auto given =
                static_cast<uInt>(std::min<std::size_t>(input.size(), std::numeric_limits<uInt>::max()));
            stream_.next_in = const_cast<Bytef*>(input.data());  // zlib reads only
            stream_.avail_in = given;
            if (deflate(&stream_, Z_NO_FLUSH) != Z_OK)
                throw Exception(E_GZIP);
            input = input.subspan(given - stream_.avail_in);
            if (stream_.avail_out == 0)
                flush(sink);
        }
    }

    void finish(const Sink& sink) {
        int status = Z_OK;
        while (status == Z_OK) {
            status = deflate(&stream_, Z_FINISH);
            flush(sink);
        }
        if (status != Z_STREAM_END)
            throw Exception(E_GZIP);
    }

private:
    void clearPiece() noexcept {
        stream_.next_out = piece_.data();
        stream_.avail_out = static_cast<uInt>(piece_.size());
    }

    void flush(const Sink& sink) {
        sink(std::span<const std::uint8_t>(piece_).first(piece_.size() - stream_.avail_out));
        clearPiece();
    }

    z_stream stream_{};
    Bytes piece_;
};

// Members one after another, fed in pieces of any size.
class MemberReader {
public:
    void feed(std::span<const std::uint8_t> input, const Sink& sink) {
        while (!input.empty() && place_ != Place::behind) {
            if (place_ == Place::inMember) {
                inflateSome(input, sink);
            } else {
                place_ = nextPlace(input.front());
                input = input.subspan(1);
                if (place_ == Place::inMember)
                    beginMember(sink);
            }
        }
    }

    void finish() const {
        if (place_ == Place::inMember || place_ == Place::afterFirstMark)
            throw Exception(E_UNGZIP_BAD);
    }

private:
    enum class Place {
        inMember,
        betweenMembers,
        afterFirstMark,
        behind,  // everything more is ignored
    };
    static constexpr std::array<std::uint8_t, 2> mark{0x1F, 0x8B};

    Place nextPlace(std::uint8_t byte) const noexcept {
        if (place_ == Place::betweenMembers)
            return byte == mark[0] ? Place::afterFirstMark : Place::behind;
        return byte == mark[1] ? Place::inMember : Place::behind;
    }

    void beginMember(const Sink& sink) {
        inflater_.restart();
        std::span<const std::uint8_t> seen(mark);
        inflateSome(seen, sink);
    }

    void inflateSome(std::span<const std::uint8_t>& input, const Sink& sink) {
        switch (inflater_.run(input, sink)) {
            case Inflater::State::needsInput:
                return;
            case Inflater::State::finished:
                place_ = Place::betweenMembers;
                return;
            case Inflater::State::broken:
                throw Exception(E_UNGZIP_BAD);
        }
    }

    Inflater inflater_{gzipWindowBits, E_UNGZIP};
    Place place_ = Place::inMember;
};

}  // namespace

void gzip(std::span<const std::uint8_t> input, Bytes& output, int mode) {
    writeLog(LogLevel::debug, L"Corvane::Compression::gzip", L"[in] size: ", input.size(), L" [in] mode: ",
             mode);
    Bytes result;
    const Sink sink = appendTo(result);
    Deflater deflater(zlibLevel(mode));
    deflater.write(input, sink);
    deflater.finish(sink);
    output = std::move(result);
}

void ungzip(std::span<const std::uint8_t> input, Bytes& output) {
    writeLog(LogLevel::debug, L"Corvane::Compression::ungzip", L"[in] size: ", input.size());
    Bytes result;
    MemberReader reader;
    reader.feed(input, appendTo(result));
    reader.finish();
    output = std::move(result);
}

void gzipFileAsync(Stream::IBinaryStream& input, Stream::IBinaryStream& output,
                   const SharedProgress& progress, int mode) {
    writeLog(LogLevel::debug, L"Corvane::Compression::gzipFileAsync", L"[in] input: ", input,
             L" [in] output: ", output, L" [in] mode: ", mode);
    Stream::expectSeparate(input, output, E_GZIP_OPEN);
    Stream::OutputRange range(output);
    const Sink sink = range.sink();
    Deflater deflater(zlibLevel(mode));
    Stream::forEachBlock(input, pieceSize, progress,
                         [&](std::span<const std::uint8_t> block, bool) { deflater.write(block, sink); });
    deflater.finish(sink);
    range.commit();
}

void ungzipFileAsync(Stream::IBinaryStream& input, Stream::IBinaryStream& output,
                     const SharedProgress& progress) {
    writeLog(LogLevel::debug, L"Corvane::Compression::ungzipFileAsync", L"[in] input: ", input,
             L" [in] output: ", output);
    Stream::expectSeparate(input, output, E_UNGZIP);
    Stream::OutputRange range(output);
    const Sink sink = range.sink();
    MemberReader reader;
    Stream::forEachBlock(input, pieceSize, progress,
                         [&](std::span<const std::uint8_t> block, bool) { reader.feed(block, sink); });
    reader.finish();
    range.commit();
}

}  // namespace Corvane::Compression
