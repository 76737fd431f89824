#include "compression/zip_io.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace Corvane::Compression::detail {
namespace {

constexpr std::uint64_t windowSize = 0x10000;

}  // namespace

struct ZipIoFunctions {
    static ZipIo& of(voidpf opaque) noexcept { return *static_cast<ZipIo*>(opaque); }

    // Runs one operation; what it throws becomes `failed`.
    template <class Result, class Operation>
    static Result guard(voidpf opaque, Result failed, Operation&& operation) noexcept {
        ZipIo& io = of(opaque);
        try {
            return operation(io);
        } catch (...) {
            if (!io.failure_)
                io.failure_ = std::current_exception();
            return failed;
        }
    }

    static voidpf ZCALLBACK open(voidpf opaque, const void*, int) { return opaque; }

    static uLong ZCALLBACK read(voidpf opaque, voidpf, void* buffer, uLong size) {
        return guard(opaque, uLong{0}, [&](ZipIo& io) {
            return static_cast<uLong>(io.read(std::span(static_cast<std::uint8_t*>(buffer), size)));
        });
    }

    static uLong ZCALLBACK write(voidpf opaque, voidpf, const void* buffer, uLong size) {
        return guard(opaque, uLong{0}, [&](ZipIo& io) {
            io.write(std::span(static_cast<const std::uint8_t*>(buffer), size));
            return size;
        });
    }

    static ZPOS64_T ZCALLBACK tell(voidpf opaque, voidpf) { return of(opaque).position(); }

    static long ZCALLBACK seek(voidpf opaque, voidpf, ZPOS64_T offset, int origin) {
        return guard(opaque, -1L, [&](ZipIo& io) { return io.seek(offset, origin) ? 0L : -1L; });
    }

    static int ZCALLBACK close(voidpf opaque, voidpf) {
        return guard(opaque, -1, [](ZipIo& io) {
            io.flush();
            return 0;
        });
    }

    static int ZCALLBACK error(voidpf opaque, voidpf) { return of(opaque).failure_ ? 1 : 0; }
};

ZipIo::ZipIo(std::unique_ptr<ZipStorage> storage, std::uint64_t begin)
    : storage_(std::move(storage)), begin_(begin) {}

zlib_filefunc64_def ZipIo::functions() noexcept {
    return {ZipIoFunctions::open, ZipIoFunctions::read,  ZipIoFunctions::write, ZipIoFunctions::tell,
            ZipIoFunctions::seek, ZipIoFunctions::close, ZipIoFunctions::error, this};
}

void ZipIo::rethrow() const {
    if (failure_)
        std::rethrow_exception(failure_);
}

void ZipIo::discard() noexcept {
    discarded_ = true;
    pending_.clear();
}

void ZipIo::divert(Bytes* target) {
    flush();
    diverted_ = target;
}

std::size_t ZipIo::read(std::span<std::uint8_t> buffer) {
    flush();
    std::size_t done = 0;
    while (done < buffer.size()) {
        const std::size_t count = fromWindow(buffer.subspan(done));
        if (count == 0)
            break;
        done += count;
        position_ += count;
    }
    return done;
}

std::size_t ZipIo::fromWindow(std::span<std::uint8_t> buffer) {
    if (position_ < windowBegin_ || position_ - windowBegin_ >= window_.size()) {
        // Aligned, so that a search from the end backwards stays in one window for a while.
        windowBegin_ = position_ - position_ % windowSize;
        window_.resize(windowSize);
        std::size_t filled = 0;
        try {
            filled = discarded_ ? 0 : storage_->read(begin_ + windowBegin_, std::span(window_));
        } catch (...) {
            window_.clear();
            throw;
        }
        window_.resize(filled);
    }
    const std::uint64_t offset = position_ - windowBegin_;
    if (offset >= window_.size())
        return 0;
    const auto begin = window_.begin() + static_cast<std::ptrdiff_t>(offset);
    const std::size_t count = std::min(buffer.size(), window_.size() - static_cast<std::size_t>(offset));
    std::copy_n(begin, count, buffer.begin());
    return count;
}

void ZipIo::write(std::span<const std::uint8_t> bytes) {
    if (diverted_) {
        diverted_->insert(diverted_->end(), bytes.begin(), bytes.end());
    } else if (bytes.size() >= windowSize && !discarded_) {
        flush();
        window_.clear();
        storage_->write(begin_ + position_, bytes);
    } else if (!discarded_) {
        pending_.insert(pending_.end(), bytes.begin(), bytes.end());
    }
    position_ += bytes.size();
    if (pending_.size() >= windowSize)
        flush();
}

bool ZipIo::seek(std::uint64_t offset, int origin) {
    flush();
    std::uint64_t position = offset;
    if (origin == ZLIB_FILEFUNC_SEEK_CUR)
        position += position_;
    else if (origin == ZLIB_FILEFUNC_SEEK_END)
        position += storage_->size() - begin_;
    if (position > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
        return false;
    position_ = position;
    return true;
}

void ZipIo::flush() {
    if (pending_.empty())
        return;
    window_.clear();
    // Taken out first, so that nothing is written a second time after a failure.
    Bytes bytes = std::move(pending_);
    pending_.clear();
    storage_->write(begin_ + position_ - bytes.size(), bytes);
    bytes.clear();
    pending_ = std::move(bytes);
}

}  // namespace Corvane::Compression::detail
