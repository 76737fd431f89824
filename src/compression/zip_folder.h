// Folders on disk into archives, and archives into folders.
#pragma once

#include "compression/zip_archive.h"
#include "core/progress.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace Corvane::Compression {

struct FolderExtraction {
    std::uint64_t maxSize = unlimitedSize;  // of all contents together, as the archive states them
    bool overwrite = false;
};

// Restores all entries below a folder, which is made when it is missing, with the dates of the files. Before
// anything is written the whole list is looked through: Exception E_UNZIP_BAD when an entry would lead out of
// the folder, has a name that Windows would take for something else or does not take at all, or lies where
// another file or folder does, in upper or lower case; E_BINARY_MAX_SIZE above the limit; E_UNZIP when an
// entry is encrypted. Files that exist already are an error without `overwrite`; links below the folder
// always are. Later failures leave the files that are complete, and old ones that were to be replaced:
// Win32Exception E_DIRECTORY_PATH, E_CREATE_FILE, E_FILE_WRITE, what ZipArchive::extract throws, E_CANCELED.
// What was wrong with one entry says which.
void extractToFolder(const ZipArchive& archive, const std::wstring& folder, const FolderExtraction& options,
                     const SharedProgress& progress);

// A name of the system as archives have it, in UTF-8. Throws Exception E_ZIP_OPEN_NEW_FILE for a surrogate
// without its partner.
std::string zipNameOf(std::wstring_view name);

// Adds a file under its name, or all that lies below a folder, with entries for the folders themselves.
// `prefix`, UTF-8, is put before the names, as the folder to find them in; it may be empty. Links are left
// out, and so is the file that the archive lies in; alone it is an Exception E_ZIP_OPEN_NEW_FILE. Adds all or
// nothing. Throws Win32Exception E_DIRECTORY_PATH, E_GET_FILE_ATTRIBUTES, E_CREATE_FILE, E_FILE_READ, what
// ZipArchive::update throws, E_CANCELED; E_ZIP_ARCHIVE_STREAM_DISPOSE when the archive is closed meanwhile.
// What was wrong with one file says which.
void addFromDisk(ZipArchive& archive, const std::wstring& path, const std::string& prefix,
                 const SharedProgress& progress);

}  // namespace Corvane::Compression
