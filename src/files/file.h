// A file on disk as a stream.
#pragma once

#include "core/handles.h"
#include "core/lock.h"
#include "stream/binary_stream.h"

#include <memory>
#include <string>

namespace Corvane {

// How a file is opened: the values of CreateFileW.
struct FileMode {
    DWORD access = GENERIC_READ;
    DWORD share = FILE_SHARE_READ;
    DWORD disposition = OPEN_EXISTING;
    DWORD attributes = FILE_ATTRIBUTE_NORMAL;
};

struct FileTimes {
    FILETIME creation;
    FILETIME access;
    FILETIME write;
};

// The same for all paths and handles of a file. The date tells files apart where the file system has no
// numbers for them.
struct FileIdentity {
    DWORD volume;
    std::uint64_t number;
    std::uint64_t created;

    bool operator==(const FileIdentity&) const = default;
};

class File : public Stream::IBinaryStream {
public:
    // `path` may be longer than MAX_PATH. Throws Win32Exception E_CREATE_FILE, and E_DIRECTORY_PATH for a
    // text that is no path. OPEN_ALWAYS and CREATE_ALWAYS tell in `existed` whether there was such a file.
    static std::shared_ptr<File> open(const std::wstring& path, const FileMode& mode,
                                      bool* existed = nullptr);

    // A file that is closed from the beginning.
    static std::shared_ptr<File> closed();

    File(const File&) = delete;
    File& operator=(const File&) = delete;

    // Failures of the system are Win32Exceptions: E_FILE_SIZE, E_SEEK_IN_FILE, E_FILE_READ, E_FILE_WRITE.
    Stream::State state() const override;
    std::uint64_t seek(std::int64_t offset, Stream::Origin origin) override;
    void resize(std::uint64_t size) override;
    void close() override;
    // Throws Win32Exception E_CREATE_FILE.
    std::shared_ptr<Stream::IBinaryStream> duplicate() const override;
    std::size_t read(std::span<std::uint8_t> buffer) override;
    void write(std::span<const std::uint8_t> bytes) override;
    SharedBytes read(std::size_t count) override;
    SharedBytes seekAndRead(std::int64_t position, std::size_t count) override;
    void seekAndWrite(std::int64_t position, std::span<const std::uint8_t> bytes) override;

    // Has the system write to the disk what it still holds. Throws Win32Exception E_FLUSH_FILE_BUFFER.
    void flush();

    // Throws Win32Exception E_GET_FILE_ATTRIBUTES.
    FileIdentity identity() const;
    FileTimes times() const;
    // Sets those that are given. Throws Win32Exception E_FILE_WRITE.
    void setTimes(const FILETIME* creation, const FILETIME* access, const FILETIME* write);

    // The full path the file was opened under.
    const std::wstring& path() const noexcept { return path_; }
    std::wstring place() const override { return path_; }

private:
    File(FileHandle handle, std::wstring path) noexcept
        : handle_(std::move(handle)), path_(std::move(path)) {}

    void logInput(const wchar_t* function, const wchar_t* name, std::uint64_t value) const;
    HANDLE openHandle(const ErrorDescriptor& descriptor) const;
    std::uint64_t sizeLocked() const;
    std::uint64_t positionLocked() const;
    void moveLocked(std::uint64_t position) const;
    std::uint64_t seekLocked(std::int64_t offset, Stream::Origin origin);
    std::size_t readLocked(std::span<std::uint8_t> buffer);
    SharedBytes readLocked(std::size_t count);
    void writeLocked(std::span<const std::uint8_t> bytes);

    FileHandle handle_;
    std::wstring path_;
    mutable SharedMutex mutex_;
};

// The path made absolute, in the form that the system takes as it stands and that has no length limit. Throws
// Win32Exception E_DIRECTORY_PATH.
std::wstring verbatimPath(const std::wstring& path);

// The same, but left in its ordinary form where that is short enough.
std::wstring unlimitedPath(const std::wstring& path);

// The whole content of a file, which others may go on reading. Throws what File throws, and Exception
// E_BINARY_MAX_SIZE beyond largestBinary, E_READ_OR_WRONG_FILE_SIZE when the file does not fit in memory or
// becomes shorter meanwhile.
Bytes readFile(const std::wstring& path);

// Creates the file, or replaces the content of an existing one, which keeps its attributes and its access
// rights. When there is no room for the new content the old one stays. Throws what File throws.
void writeFile(const std::wstring& path, std::span<const std::uint8_t> bytes);

}  // namespace Corvane
