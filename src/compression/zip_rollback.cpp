#include "compression/zip_rollback.h"

namespace Corvane::Compression::detail {

ZipRollback::ZipRollback(Stream::IBinaryStream& stream, std::uint64_t begin,
                         std::span<const std::uint8_t> directory, std::span<const std::uint8_t> behind)
    : stream_(stream),
      kept_(Stream::keptOpen(stream)),
      begin_(begin),
      directory_(directory),
      behind_(behind) {}

ZipRollback::~ZipRollback() {
    if (committed_ || !written_)
        return;
    try {
        restore();
    } catch (...) {
        // The failure that led here is the one to report.
    }
}

std::unique_ptr<ZipStorage> ZipRollback::storage() {
    return streamStorage(stream_, 0, [this] { written_ = true; });
}

void ZipRollback::commit(std::uint64_t size) {
    if (stream_.state().size > size)
        stream_.resize(size);
    committed_ = true;
}

void ZipRollback::restore() {
    kept_->seekAndWrite(static_cast<std::int64_t>(begin_), directory_);
    kept_->seekAndWrite(static_cast<std::int64_t>(begin_ + directory_.size()), behind_);
    kept_->resize(begin_ + directory_.size() + behind_.size());
}

}  // namespace Corvane::Compression::detail
