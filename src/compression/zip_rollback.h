// Takes back what was written over an archive when changing it fails half-way.
#pragma once

#include "binary/bytes.h"
#include "compression/zip_storage.h"
#include "stream/binary_stream.h"

#include <cstdint>
#include <memory>

namespace Corvane::Compression::detail {

// Keeps in memory what is overwritten: of an archive that is appended to that is its directory. Without
// commit() the destructor puts it back and cuts off what was added, which needs no more room than there was
// before, and is done even when somebody has closed the file meanwhile. The stream must outlive it.
class ZipRollback {
public:
    explicit ZipRollback(Stream::IBinaryStream& stream);
    ~ZipRollback();
    ZipRollback(const ZipRollback&) = delete;
    ZipRollback& operator=(const ZipRollback&) = delete;

    // The whole stream, to be written through; must not outlive this object.
    std::unique_ptr<ZipStorage> storage();

    // The stream holds what it should hold now, `size` bytes; more are cut off.
    void commit(std::uint64_t size);

private:
    class Storage;

    void save(std::uint64_t begin, std::uint64_t end);
    void restore();

    Stream::IBinaryStream& stream_;
    std::shared_ptr<Stream::IBinaryStream> kept_;
    std::unique_ptr<ZipStorage> whole_;
    std::uint64_t size_;        // before anything was written
    std::uint64_t savedBegin_;  // saved_ lies here; everything from here to its end may have changed
    Bytes saved_;
    bool written_ = false;
    bool committed_ = false;
};

}  // namespace Corvane::Compression::detail
