// Files and folders by their paths. Paths may be longer than MAX_PATH; a text that is no path is
// Win32Exception E_DIRECTORY_PATH everywhere.
#pragma once

#include "files/file.h"

#include <windows.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Corvane::FileSystem {

struct Entry {
    std::wstring name;
    DWORD attributes;
    std::uint64_t size;
    FILETIME written;
    bool link;  // leads elsewhere, or may do so; reparse points of deduplicated files, for one, do not
};

// The path of a name in a folder; a name alone when the folder's path is empty.
std::wstring join(const std::wstring& folder, const std::wstring& name);

// A new file with a name of its own in the temporary folder, open for reading and writing. It is deleted when
// it is closed unless it is to be kept. Throws Win32Exception E_GET_TEMP_FOLDER_PATH, E_CREATE_FILE.
std::shared_ptr<File> createTemporaryFile(bool keep);

// The temporary folder, ending in a backslash. Throws Win32Exception E_GET_TEMP_FOLDER_PATH.
std::wstring temporaryFolder();

// Whether there is such a file, or such a folder; anything that keeps one from seeing it counts as no.
bool fileExists(const std::wstring& path);
bool folderExists(const std::wstring& path);

// A file or folder under the name that it has in its folder; a link is not followed. `path` is no drive.
// Throws Win32Exception E_GET_FILE_ATTRIBUTES.
Entry find(const std::wstring& path);

// Whether there is a link of this path. Throws Win32Exception E_GET_FILE_ATTRIBUTES.
bool isLink(const std::wstring& path);

// What the system keeps about a file or a folder; a link is followed. Throws Win32Exception
// E_GET_FILE_ATTRIBUTES.
Entry entryOf(const std::wstring& path);
FileTimes timesOf(const std::wstring& path);

// Of a file. Throws Win32Exception E_GET_FILE_ATTRIBUTES, and E_FILE_SIZE for a folder.
std::uint64_t lengthOf(const std::wstring& path);

// FILE_ATTRIBUTE_... of the file. Throws Win32Exception E_FILE_WRITE.
void setAttributes(const std::wstring& path, DWORD attributes);

// Copies a file with its attributes and dates. Throws Win32Exception E_CREATE_FILE when there is no source,
// E_FILE_WRITE; an existing target that is not to be overwritten is one.
void copyFile(const std::wstring& source, const std::wstring& target, bool overwrite);

// Moves or renames a file, to another volume as well. Throws Win32Exception E_FILE_MOVE.
void moveFile(const std::wstring& source, const std::wstring& target, bool overwrite);

// Throws Win32Exception E_FILE_DELETE.
void deleteFile(const std::wstring& path);

// Makes a folder and those above it that are missing. A folder that is there is no failure. Throws
// Win32Exception E_DIRECTORY_PATH.
void createFolder(const std::wstring& path);

// Deletes an empty folder, or a folder with its contents. A link below it is deleted, never followed; a
// folder that is itself a link goes alone. Stops at the first thing that cannot be deleted, but waits a
// second for what somebody else still holds open. Throws Win32Exception E_DIRECTORY_DELETE.
void deleteFolder(const std::wstring& path, bool withContents);

// The files and folders in a folder whose names, the short ones (8.3) of the disk included, match a mask (*
// and ?), in the system's order, without "." and "..". Throws Win32Exception E_DIRECTORY_PATH.
std::vector<Entry> list(const std::wstring& folder, const std::wstring& mask);

}  // namespace Corvane::FileSystem
