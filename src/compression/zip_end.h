// The end of an archive, for which minizip does not do enough: before version 1.3 it writes a zip64 record
// only behind 4 GiB, whatever the number of entries, and it loses the comment of a zip64 archive that grows.
#pragma once

#include "binary/bytes.h"
#include "compression/zip_io.h"

#include <cstdint>

namespace Corvane::Compression::detail {

// Whether there is nothing but the end record of an archive without entries, which minizip may fail to find
// at offset 0. More may stand behind such a record than its comment: another archive then. Throws what the
// storage throws.
bool isEmptyArchive(ZipStorage& storage);

// The comment on the whole archive; empty when there is no end record. Throws what the storage throws.
Bytes archiveComment(ZipStorage& storage);

// For an archive that minizip has just closed without a comment, at whose end `io` stands: gives it the
// comment and, where its end record cannot tell the number of entries, the zip64 records. Throws Exception
// E_ZIP and what the storage throws.
void completeEnd(ZipIo& io, std::uint64_t entries, const Bytes& comment);

}  // namespace Corvane::Compression::detail
