// ZipArchive: the entries of a zip archive in a stream.
#pragma once

#include "com/runtime/object.h"
#include "compression/zip_archive.h"

#include <VetrelCorvane2_h.h>

#include <memory>

// Only CompressionService, which checks the page's site, makes one with an archive; any other is as if
// closed.
class CZipArchive final : public Corvane::Com::Object<CZipArchive, ZipArchive, IZipArchive> {
public:
    using SharedArchive = std::shared_ptr<Corvane::Compression::ZipArchive>;

    CZipArchive() = default;
    explicit CZipArchive(SharedArchive archive) noexcept : archive_(std::move(archive)) {}

#include <methods/IZipArchive.h>

private:
    // Throws Exception E_ZIP_ARCHIVE_STREAM_DISPOSE when there is none.
    const SharedArchive& archive() const;

    const SharedArchive archive_;
};
