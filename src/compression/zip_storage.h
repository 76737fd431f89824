// The bytes that a zip archive lies in, whatever holds them.
#pragma once

#include "binary/bytes.h"
#include "stream/binary_stream.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

namespace Corvane::Compression::detail {

class ZipStorage {
public:
    virtual ~ZipStorage() = default;

    virtual std::uint64_t size() const = 0;

    // Fills `buffer` from `position` on as far as the storage goes; returns how much that was.
    virtual std::size_t read(std::uint64_t position, std::span<std::uint8_t> buffer) = 0;

    // Writes at `position`, which is at most size().
    virtual void write(std::uint64_t position, std::span<const std::uint8_t> bytes) = 0;
};

// An archive to be read from memory, which must outlive it. Writing is an Exception E_ZIP.
std::unique_ptr<ZipStorage> spanStorage(std::span<const std::uint8_t> bytes);

// An archive made in memory; `bytes` must outlive it.
std::unique_ptr<ZipStorage> bytesStorage(Bytes& bytes);

// What `storage` holds up to `end`, and then `tail`. Writing is an Exception E_ZIP.
std::unique_ptr<ZipStorage> storageWithTail(std::unique_ptr<ZipStorage> storage, std::uint64_t end,
                                            Bytes tail);

// An archive in a stream from `begin` on; the stream must outlive it. `beforeWriting` is called each time.
// Throws what the stream throws.
std::unique_ptr<ZipStorage> streamStorage(
    Stream::IBinaryStream& stream, std::uint64_t begin, std::function<void()> beforeWriting = [] {});

}  // namespace Corvane::Compression::detail
