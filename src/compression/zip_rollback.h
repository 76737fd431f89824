// Takes back what was written over an archive when changing it fails half-way.
#pragma once

#include "compression/zip_storage.h"
#include "stream/binary_stream.h"

#include <cstdint>
#include <memory>
#include <span>

namespace Corvane::Compression::detail {

// Without commit() the destructor puts back what the stream held from `begin` to its end, and cuts off what
// was added, which needs no more room than there was before, and is done even when somebody has closed the
// file meanwhile. The stream must outlive it, and so must `directory` and what stands `behind` it to the end.
class ZipRollback {
public:
    ZipRollback(Stream::IBinaryStream& stream, std::uint64_t begin, std::span<const std::uint8_t> directory,
                std::span<const std::uint8_t> behind);
    ~ZipRollback();
    ZipRollback(const ZipRollback&) = delete;
    ZipRollback& operator=(const ZipRollback&) = delete;

    // The whole stream, to be written from `begin` on; must not outlive this object.
    std::unique_ptr<ZipStorage> storage();

    // The stream holds what it should hold now, `size` bytes; more are cut off.
    void commit(std::uint64_t size);

private:
    void restore();

    Stream::IBinaryStream& stream_;
    std::shared_ptr<Stream::IBinaryStream> kept_;
    std::uint64_t begin_;
    std::span<const std::uint8_t> directory_;
    std::span<const std::uint8_t> behind_;
    bool written_ = false;
    bool committed_ = false;
};

}  // namespace Corvane::Compression::detail
