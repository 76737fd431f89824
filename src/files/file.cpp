#include "files/file.h"

#include "core/check.h"
#include "core/log.h"
#include "core/moment.h"

#include <algorithm>
#include <limits>
#include <mutex>

namespace Corvane {
namespace {

// The most that one system call is asked to transfer.
constexpr std::size_t transferLimit = std::size_t{1} << 26;

DWORD transferSize(std::size_t wanted) noexcept {
    return static_cast<DWORD>(std::min(wanted, transferLimit));
}

// Takes back a growth, as far as that goes.
void shrink(File& file, std::uint64_t size) noexcept {
    try {
        if (file.state().size > size)
            file.resize(size);
    } catch (...) {
        // The failure that led here is the one to report.
    }
}

std::wstring fullPath(const std::wstring& path) {
    std::wstring full(std::max<std::size_t>(path.size() + 1, MAX_PATH), L'\0');
    for (;;) {
        const DWORD length =
            ::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
        checkWin32(length, E_DIRECTORY_PATH, L"GetFullPathNameW");
        const bool fits = length < full.size();
        full.resize(length);
        if (fits)
            return full;
    }
}

}  // namespace

std::wstring verbatimPath(const std::wstring& path) {
    // A text from a script may hold zeros; the system would silently take the part before the first.
    if (path.empty() || path.find(L'\0') != std::wstring::npos)
        throw Win32Exception(E_DIRECTORY_PATH, ERROR_INVALID_NAME);
    if (path.starts_with(L"\\\\?\\") || path.starts_with(L"\\\\.\\"))
        return path;
    std::wstring full = fullPath(path);
    // Names of devices become such a path.
    if (full.starts_with(L"\\\\.\\"))
        return full;
    return full.starts_with(L"\\\\") ? L"\\\\?\\UNC\\" + full.substr(2) : L"\\\\?\\" + full;
}

std::wstring unlimitedPath(const std::wstring& path) {
    const std::wstring verbatim = verbatimPath(path);
    return verbatim.size() < MAX_PATH ? path : verbatim;
}

std::shared_ptr<File> File::open(const std::wstring& path, const FileMode& mode, bool* existed) {
    writeLog(LogLevel::debug, L"Corvane::File::open", L"[in] path: ", path, L" [in] access: ", mode.access,
             L" [in] share: ", mode.share, L" [in] disposition: ", mode.disposition, L" [in] attributes: ",
             mode.attributes);
    FileHandle handle(::CreateFileW(unlimitedPath(path).c_str(), mode.access, mode.share, nullptr,
                                    mode.disposition, mode.attributes, nullptr));
    checkWin32(static_cast<bool>(handle), E_CREATE_FILE, L"CreateFileW");
    if (existed)
        *existed = ::GetLastError() == ERROR_ALREADY_EXISTS;
    return std::shared_ptr<File>(new File(std::move(handle), fullPath(path)));
}

std::shared_ptr<File> File::closed() {
    return std::shared_ptr<File>(new File({}, {}));
}

void File::logInput(const wchar_t* function, const wchar_t* name, std::uint64_t value) const {
    writeLog(LogLevel::debug, function, L"[in] ", name, L": ", value, L", path: ", path_);
}

HANDLE File::openHandle(const ErrorDescriptor& descriptor) const {
    if (!handle_)
        throw Stream::ClosedStreamException(descriptor);
    return handle_.get();
}

std::uint64_t File::sizeLocked() const {
    LARGE_INTEGER size{};
    checkWin32(::GetFileSizeEx(openHandle(E_FILE_SIZE), &size), E_FILE_SIZE, L"GetFileSizeEx");
    return static_cast<std::uint64_t>(size.QuadPart);
}

std::uint64_t File::positionLocked() const {
    LARGE_INTEGER position{};
    checkWin32(::SetFilePointerEx(openHandle(E_SEEK_IN_FILE), LARGE_INTEGER{}, &position, FILE_CURRENT),
               E_SEEK_IN_FILE, L"SetFilePointerEx");
    return static_cast<std::uint64_t>(position.QuadPart);
}

void File::moveLocked(std::uint64_t position) const {
    LARGE_INTEGER distance{};
    distance.QuadPart = static_cast<LONGLONG>(position);
    checkWin32(::SetFilePointerEx(openHandle(E_SEEK_IN_FILE), distance, nullptr, FILE_BEGIN), E_SEEK_IN_FILE,
               L"SetFilePointerEx");
}

Stream::State File::state() const {
    const std::lock_guard guard(mutex_);
    const std::uint64_t size = sizeLocked();
    return {positionLocked(), size};
}

std::uint64_t File::seekLocked(std::int64_t offset, Stream::Origin origin) {
    openHandle(E_SEEK_IN_FILE);
    const std::uint64_t size = sizeLocked();
    const std::uint64_t from = positionLocked();
    const std::uint64_t position = Stream::target(offset, origin, {from, size});
    writeLog(LogLevel::debug, L"Corvane::File::seek", L"[in] offset: ", offset, L" [in] origin: ",
             static_cast<std::uint32_t>(origin), L", old position: ", from, L", new position: ", position);
    moveLocked(position);
    return position;
}

std::uint64_t File::seek(std::int64_t offset, Stream::Origin origin) {
    const std::lock_guard guard(mutex_);
    return seekLocked(offset, origin);
}

void File::resize(std::uint64_t size) {
    if (size > static_cast<std::uint64_t>(std::numeric_limits<LONGLONG>::max()))
        throw Exception(E_OFFSET_OUT_OF_RANGE);
    const std::lock_guard guard(mutex_);
    logInput(L"Corvane::File::resize", L"size", size);
    const HANDLE file = openHandle(E_FILE_WRITE);
    const std::uint64_t position = positionLocked();
    moveLocked(size);
    const BOOL done = ::SetEndOfFile(file);
    const DWORD error = ::GetLastError();
    moveLocked(done ? std::min(position, size) : position);
    if (!done)
        failWin32(E_FILE_WRITE, L"SetEndOfFile", error);
}

void File::close() {
    const std::lock_guard guard(mutex_);
    writeLog(LogLevel::debug, L"Corvane::File::close", L"path: ", path_);
    handle_.reset();
}

std::shared_ptr<Stream::IBinaryStream> File::duplicate() const {
    const std::lock_guard guard(mutex_);
    FileHandle handle;
    checkWin32(::DuplicateHandle(::GetCurrentProcess(), openHandle(E_CREATE_FILE), ::GetCurrentProcess(),
                                 handle.put(), 0, FALSE, DUPLICATE_SAME_ACCESS),
               E_CREATE_FILE, L"DuplicateHandle");
    return std::shared_ptr<File>(new File(std::move(handle), path_));
}

std::size_t File::readLocked(std::span<std::uint8_t> buffer) {
    const HANDLE file = openHandle(E_FILE_READ);
    std::size_t total = 0;
    while (total < buffer.size()) {
        DWORD done = 0;
        checkWin32(
            ::ReadFile(file, buffer.data() + total, transferSize(buffer.size() - total), &done, nullptr),
            E_FILE_READ, L"ReadFile");
        if (done == 0)
            break;
        total += done;
    }
    return total;
}

SharedBytes File::readLocked(std::size_t count) {
    logInput(L"Corvane::File::read", L"count", count);
    openHandle(E_FILE_READ);
    const std::uint64_t size = sizeLocked();
    const std::uint64_t left = size - std::min(size, positionLocked());
    const std::uint64_t wanted = std::min<std::uint64_t>(count, left);
    auto bytes = std::make_shared<Bytes>();
    makeRoom(*bytes, wanted);
    bytes->resize(static_cast<std::size_t>(wanted));
    bytes->resize(readLocked(std::span(*bytes)));
    return bytes;
}

void File::writeLocked(std::span<const std::uint8_t> bytes) {
    logInput(L"Corvane::File::write", L"size", bytes.size());
    const HANDLE file = openHandle(E_FILE_WRITE);
    while (!bytes.empty()) {
        DWORD done = 0;
        checkWin32(::WriteFile(file, bytes.data(), transferSize(bytes.size()), &done, nullptr), E_FILE_WRITE,
                   L"WriteFile");
        // A device that takes nothing and reports no error would be asked for ever.
        if (done == 0)
            failWin32(E_FILE_WRITE, L"WriteFile", ERROR_WRITE_FAULT);
        bytes = bytes.subspan(done);
    }
}

std::size_t File::read(std::span<std::uint8_t> buffer) {
    const std::lock_guard guard(mutex_);
    return readLocked(buffer);
}

SharedBytes File::read(std::size_t count) {
    const std::lock_guard guard(mutex_);
    return readLocked(count);
}

void File::write(std::span<const std::uint8_t> bytes) {
    const std::lock_guard guard(mutex_);
    writeLocked(bytes);
}

SharedBytes File::seekAndRead(std::int64_t position, std::size_t count) {
    const std::lock_guard guard(mutex_);
    seekLocked(position, Stream::Origin::beginning);
    return readLocked(count);
}

void File::seekAndWrite(std::int64_t position, std::span<const std::uint8_t> bytes) {
    const std::lock_guard guard(mutex_);
    seekLocked(position, Stream::Origin::beginning);
    writeLocked(bytes);
}

void File::flush() {
    writeLog(LogLevel::debug, L"Corvane::File::flush", L"path: ", path_);
    const std::lock_guard guard(mutex_);
    checkWin32(::FlushFileBuffers(openHandle(E_FLUSH_FILE_BUFFER)), E_FLUSH_FILE_BUFFER, L"FlushFileBuffers");
}

FileIdentity File::identity() const {
    const std::lock_guard guard(mutex_);
    BY_HANDLE_FILE_INFORMATION data{};
    checkWin32(::GetFileInformationByHandle(openHandle(E_GET_FILE_ATTRIBUTES), &data), E_GET_FILE_ATTRIBUTES,
               L"GetFileInformationByHandle");
    const auto whole = [](DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; };
    return {data.dwVolumeSerialNumber, whole(data.nFileIndexHigh, data.nFileIndexLow),
            toTicks(data.ftCreationTime)};
}

FileTimes File::times() const {
    writeLog(LogLevel::debug, L"Corvane::File::times", L"path: ", path_);
    const std::lock_guard guard(mutex_);
    FileTimes times{};
    checkWin32(::GetFileTime(openHandle(E_GET_FILE_ATTRIBUTES), &times.creation, &times.access, &times.write),
               E_GET_FILE_ATTRIBUTES, L"GetFileTime");
    return times;
}

void File::setTimes(const FILETIME* creation, const FILETIME* access, const FILETIME* write) {
    writeLog(LogLevel::debug, L"Corvane::File::setTimes", L"path: ", path_);
    const std::lock_guard guard(mutex_);
    checkWin32(::SetFileTime(openHandle(E_FILE_WRITE), creation, access, write), E_FILE_WRITE,
               L"SetFileTime");
}

Bytes readFile(const std::wstring& path) {
    writeLog(LogLevel::debug, L"Corvane::readFile", L"[in] path: ", path);
    // Others may be writing it, as a log or a temporary file.
    const auto file = File::open(path, {.share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE});
    const std::uint64_t size = file->state().size;
    if (size > largestBinary)
        throw Exception(E_BINARY_MAX_SIZE);
    Bytes bytes;
    if (size > bytes.max_size())
        throw Exception(E_READ_OR_WRONG_FILE_SIZE);
    bytes.resize(static_cast<std::size_t>(size));
    if (file->read(std::span(bytes)) != bytes.size())
        throw Exception(E_READ_OR_WRONG_FILE_SIZE);
    return bytes;
}

void writeFile(const std::wstring& path, std::span<const std::uint8_t> bytes) {
    writeLog(LogLevel::debug, L"Corvane::writeFile", L"[in] path: ", path, L" [in] size: ", bytes.size());
    bool existed = false;
    const auto file = File::open(path, {GENERIC_WRITE, 0, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL}, &existed);
    const std::uint64_t oldSize = existed ? file->state().size : 0;
    try {
        // Room is made sure of before the old content is touched: a failed growth changes nothing.
        if (bytes.size() > oldSize)
            file->resize(bytes.size());
        file->write(bytes);
        if (bytes.size() < oldSize)
            file->resize(bytes.size());
    } catch (...) {
        if (existed)
            shrink(*file, oldSize);
        file->close();
        if (!existed)
            ::DeleteFileW(unlimitedPath(path).c_str());
        throw;
    }
}

}  // namespace Corvane
