// The list of an archive's entries as scripts see it.
#pragma once

#include "compression/zip_archive.h"

#include <json/value.h>

namespace Corvane::Compression {

// An array with one object for each entry: index, name, size, packedSize, crc (CRC-32 as a number), date
// (local time as "2024-02-03T04:05:06"; empty when the archive holds none), directory, encrypted.
Json::Value entriesJson(const ZipEntries& entries);

}  // namespace Corvane::Compression
