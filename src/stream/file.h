// A file on disk.
#pragma once

#include "binary/bytes.h"
#include "core/handles.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace Corvane {

class File
{
public:
    // Opens with the access, share mode and creation disposition of CreateFileW. `path` may be longer than
    // MAX_PATH when it is absolute. Throws Win32Exception E_CREATE_FILE, E_DIRECTORY_PATH.
    static File open(const std::wstring& path, DWORD access, DWORD share, DWORD disposition);

    // Bytes in the file. Throws Win32Exception E_FILE_SIZE.
    std::uint64_t size() const;

    // Changes the size and leaves the position at the new end. Throws Win32Exception E_SEEK_IN_FILE, and
    // E_FILE_WRITE when there is no room.
    void resize(std::uint64_t size);

    // Moves to an offset from the beginning. Throws Win32Exception E_SEEK_IN_FILE.
    void seek(std::uint64_t offset);

    // Fills `buffer` as far as the file goes; returns how much that was. Throws Win32Exception E_FILE_READ.
    std::size_t read(std::span<std::uint8_t> buffer);

    // Writes all of `bytes`. Throws Win32Exception E_FILE_WRITE.
    void write(std::span<const std::uint8_t> bytes);

private:
    explicit File(FileHandle handle) noexcept : handle_(std::move(handle)) {}

    FileHandle handle_;
};

// The whole content of a file, which others may go on reading. Throws what File throws, and Exception
// E_READ_OR_WRONG_FILE_SIZE when the file does not fit in memory or becomes shorter meanwhile.
Bytes readFile(const std::wstring& path);

// Creates the file, or replaces the content of an existing one, which keeps its attributes and its access
// rights. When there is no room for the new content the old one stays. Throws what File throws.
void writeFile(const std::wstring& path, std::span<const std::uint8_t> bytes);

} // namespace Corvane
