// Dates of zip entries, which are local, and of files, which are not.
#pragma once

#include "compression/zip_entry.h"

#include <windows.h>

#include <optional>

namespace Corvane::Compression {

// Nothing for a date that is none.
std::optional<FILETIME> fileTimeOf(const ZipDate& date) noexcept;

// The earliest date for what has no local time.
ZipDate zipDateOf(const FILETIME& time) noexcept;

// The date of this moment.
ZipDate zipDateNow() noexcept;

}  // namespace Corvane::Compression
