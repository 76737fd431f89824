#include "compression/zip_storage.h"

#include "core/errors.h"
#include "core/exception.h"

#include <algorithm>
#include <utility>

namespace Corvane::Compression::detail {
namespace {

std::size_t copyFrom(std::span<const std::uint8_t> bytes, std::uint64_t position,
                     std::span<std::uint8_t> buffer) {
    if (position >= bytes.size())
        return 0;
    const auto rest = bytes.subspan(static_cast<std::size_t>(position));
    const std::size_t count = std::min(rest.size(), buffer.size());
    std::copy_n(rest.begin(), count, buffer.begin());
    return count;
}

class SpanStorage final : public ZipStorage {
public:
    explicit SpanStorage(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    std::uint64_t size() const override { return bytes_.size(); }

    std::size_t read(std::uint64_t position, std::span<std::uint8_t> buffer) override {
        return copyFrom(bytes_, position, buffer);
    }

    void write(std::uint64_t, std::span<const std::uint8_t>) override { throw Exception(E_ZIP); }

private:
    std::span<const std::uint8_t> bytes_;
};

class BytesStorage final : public ZipStorage {
public:
    explicit BytesStorage(Bytes& bytes) : bytes_(bytes) {}

    std::uint64_t size() const override { return bytes_.size(); }

    std::size_t read(std::uint64_t position, std::span<std::uint8_t> buffer) override {
        return copyFrom(bytes_, position, buffer);
    }

    void write(std::uint64_t position, std::span<const std::uint8_t> bytes) override {
        if (position > bytes_.size())
            throw Exception(E_OFFSET_OUT_OF_RANGE);
        const auto begin = static_cast<std::size_t>(position);
        const std::size_t inside = std::min(bytes.size(), bytes_.size() - begin);
        std::copy_n(bytes.begin(), inside, bytes_.begin() + static_cast<std::ptrdiff_t>(begin));
        bytes_.insert(bytes_.end(), bytes.begin() + static_cast<std::ptrdiff_t>(inside), bytes.end());
    }

private:
    Bytes& bytes_;
};

class StorageWithTail final : public ZipStorage {
public:
    StorageWithTail(std::unique_ptr<ZipStorage> storage, std::uint64_t end, Bytes tail)
        : storage_(std::move(storage)), end_(end), tail_(std::move(tail)) {}

    std::uint64_t size() const override { return end_ + tail_.size(); }

    std::size_t read(std::uint64_t position, std::span<std::uint8_t> buffer) override {
        std::size_t done = 0;
        if (position < end_) {
            const auto count =
                static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), end_ - position));
            done = storage_->read(position, buffer.first(count));
            if (done < count)
                return done;
        }
        return done + copyFrom(tail_, position + done - end_, buffer.subspan(done));
    }

    void write(std::uint64_t, std::span<const std::uint8_t>) override { throw Exception(E_ZIP); }

private:
    std::unique_ptr<ZipStorage> storage_;
    std::uint64_t end_;
    Bytes tail_;
};

class StreamStorage final : public ZipStorage {
public:
    StreamStorage(Stream::IBinaryStream& stream, std::uint64_t begin, std::function<void()> beforeWriting)
        : stream_(stream), begin_(begin), beforeWriting_(std::move(beforeWriting)) {}

    std::uint64_t size() const override { return stream_.state().size - begin_; }

    std::size_t read(std::uint64_t position, std::span<std::uint8_t> buffer) override {
        if (position >= size())
            return 0;
        const SharedBytes bytes =
            stream_.seekAndRead(static_cast<std::int64_t>(begin_ + position), buffer.size());
        std::copy(bytes->begin(), bytes->end(), buffer.begin());
        return bytes->size();
    }

    void write(std::uint64_t position, std::span<const std::uint8_t> bytes) override {
        beforeWriting_();
        stream_.seekAndWrite(static_cast<std::int64_t>(begin_ + position), bytes);
    }

private:
    Stream::IBinaryStream& stream_;
    std::uint64_t begin_;
    std::function<void()> beforeWriting_;
};

}  // namespace

std::unique_ptr<ZipStorage> spanStorage(std::span<const std::uint8_t> bytes) {
    return std::make_unique<SpanStorage>(bytes);
}

std::unique_ptr<ZipStorage> bytesStorage(Bytes& bytes) {
    return std::make_unique<BytesStorage>(bytes);
}

std::unique_ptr<ZipStorage> storageWithTail(std::unique_ptr<ZipStorage> storage, std::uint64_t end,
                                            Bytes tail) {
    return std::make_unique<StorageWithTail>(std::move(storage), end, std::move(tail));
}

std::unique_ptr<ZipStorage> streamStorage(Stream::IBinaryStream& stream, std::uint64_t begin,
                                          std::function<void()> beforeWriting) {
    return std::make_unique<StreamStorage>(stream, begin, std::move(beforeWriting));
}

}  // namespace Corvane::Compression::detail
