#include "compression/zip_rollback.h"

#include "core/errors.h"
#include "core/exception.h"

#include <algorithm>

namespace Corvane::Compression::detail {

class ZipRollback::Storage final : public ZipStorage {
public:
    explicit Storage(ZipRollback& rollback) : rollback_(rollback) {}

    std::uint64_t size() const override { return rollback_.whole_->size(); }

    std::size_t read(std::uint64_t position, std::span<std::uint8_t> buffer) override {
        return rollback_.whole_->read(position, buffer);
    }

    void write(std::uint64_t position, std::span<const std::uint8_t> bytes) override {
        rollback_.save(position, position + bytes.size());
        rollback_.written_ = true;
        rollback_.whole_->write(position, bytes);
    }

private:
    ZipRollback& rollback_;
};

ZipRollback::ZipRollback(Stream::IBinaryStream& stream)
    : stream_(stream),
      kept_(Stream::keptOpen(stream)),
      whole_(streamStorage(stream, 0)),
      size_(stream.state().size),
      savedBegin_(size_) {}

ZipRollback::~ZipRollback() {
    if (committed_ || !written_) {
        return;
    }
    try {
        restore();
    } catch (...) {
        // The failure that led here is the one to report.
    }
}

std::unique_ptr<ZipStorage> ZipRollback::storage() {
    return std::make_unique<Storage>(*this);
}

void ZipRollback::commit(std::uint64_t size) {
    if (stream_.state().size > size) {
        stream_.resize(size);
    }
    committed_ = true;
}

// What is saved is one piece. It begins where the directory does and takes in what lies between, if ever
// anything is written before it.
void ZipRollback::save(std::uint64_t begin, std::uint64_t end) {
    const auto fetch = [this](std::uint64_t from, std::uint64_t to) {
        Bytes bytes(static_cast<std::size_t>(to - from));
        if (whole_->read(from, bytes) != bytes.size()) {
            throw Exception(E_ZIP_OPEN);
        }
        return bytes;
    };
    if (saved_.empty()) {
        savedBegin_ = std::min(begin, size_);
    } else if (begin < savedBegin_) {
        const Bytes before = fetch(begin, savedBegin_);
        saved_.insert(saved_.begin(), before.begin(), before.end());
        savedBegin_ = begin;
    }
    const std::uint64_t savedEnd = savedBegin_ + saved_.size();
    const std::uint64_t wantedEnd = std::min(end, size_);
    if (wantedEnd > savedEnd) {
        const Bytes after = fetch(savedEnd, wantedEnd);
        saved_.insert(saved_.end(), after.begin(), after.end());
    }
}

void ZipRollback::restore() {
    if (!saved_.empty()) {
        kept_->seekAndWrite(static_cast<std::int64_t>(savedBegin_), saved_);
    }
    kept_->resize(size_);
}

}  // namespace Corvane::Compression::detail
