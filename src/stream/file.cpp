#include "stream/file.h"

#include "core/check.h"

#include <algorithm>
#include <limits>

namespace Corvane {
namespace {

// The most that one system call is asked to transfer.
constexpr std::size_t transferLimit = std::size_t{1} << 26;

DWORD transferSize(std::size_t wanted) noexcept
{
    return static_cast<DWORD>(std::min(wanted, transferLimit));
}

// The form of a path that has no length limit; it takes neither "/" nor relative parts, so the system
// makes the path absolute first.
std::wstring unlimitedPath(const std::wstring& path)
{
    std::wstring full(std::max<std::size_t>(path.size() + 1, MAX_PATH), L'\0');
    for (;;) {
        const DWORD length =
            ::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
        checkWin32(length, E_DIRECTORY_PATH, L"GetFullPathNameW");
        const bool fits = length < full.size();
        full.resize(length);
        if (fits)
            break;
    }
    if (full.size() < MAX_PATH || full.starts_with(L"\\\\?\\") || full.starts_with(L"\\\\.\\"))
        return full;
    return full.starts_with(L"\\\\") ? L"\\\\?\\UNC\\" + full.substr(2) : L"\\\\?\\" + full;
}

} // namespace

File File::open(const std::wstring& path, DWORD access, DWORD share, DWORD disposition)
{
    // A text from a script may hold zeros; the system would silently take the part before the first.
    if (path.empty() || path.find(L'\0') != std::wstring::npos)
        throw Win32Exception(E_DIRECTORY_PATH, ERROR_INVALID_NAME);
    FileHandle handle(::CreateFileW(unlimitedPath(path).c_str(), access, share, nullptr, disposition,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    checkWin32(static_cast<bool>(handle), E_CREATE_FILE, L"CreateFileW");
    return File(std::move(handle));
}

std::uint64_t File::size() const
{
    LARGE_INTEGER size{};
    checkWin32(::GetFileSizeEx(handle_.get(), &size), E_FILE_SIZE, L"GetFileSizeEx");
    return static_cast<std::uint64_t>(size.QuadPart);
}

void File::seek(std::uint64_t offset)
{
    LARGE_INTEGER distance{};
    distance.QuadPart = static_cast<LONGLONG>(offset);
    checkWin32(::SetFilePointerEx(handle_.get(), distance, nullptr, FILE_BEGIN), E_SEEK_IN_FILE,
               L"SetFilePointerEx");
}

void File::resize(std::uint64_t size)
{
    seek(size);
    checkWin32(::SetEndOfFile(handle_.get()), E_FILE_WRITE, L"SetEndOfFile");
}

std::size_t File::read(std::span<std::uint8_t> buffer)
{
    std::size_t total = 0;
    while (total < buffer.size()) {
        DWORD done = 0;
        checkWin32(::ReadFile(handle_.get(), buffer.data() + total, transferSize(buffer.size() - total), &done,
                              nullptr),
                   E_FILE_READ, L"ReadFile");
        if (done == 0)
            break;
        total += done;
    }
    return total;
}

void File::write(std::span<const std::uint8_t> bytes)
{
    while (!bytes.empty()) {
        DWORD done = 0;
        checkWin32(::WriteFile(handle_.get(), bytes.data(), transferSize(bytes.size()), &done, nullptr),
                   E_FILE_WRITE, L"WriteFile");
        bytes = bytes.subspan(done);
    }
}

Bytes readFile(const std::wstring& path)
{
    File file = File::open(path, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    const std::uint64_t size = file.size();
    Bytes bytes;
    if (size > bytes.max_size())
        throw Exception(E_READ_OR_WRONG_FILE_SIZE);
    bytes.resize(static_cast<std::size_t>(size));
    if (file.read(bytes) != bytes.size())
        throw Exception(E_READ_OR_WRONG_FILE_SIZE);
    return bytes;
}

void writeFile(const std::wstring& path, std::span<const std::uint8_t> bytes)
{
    File file = File::open(path, GENERIC_WRITE, 0, OPEN_ALWAYS);
    const std::uint64_t oldSize = file.size();
    // Room is made sure of before the old content is touched.
    if (bytes.size() > oldSize) {
        try {
            file.resize(bytes.size());
        } catch (...) {
            file.resize(oldSize);
            throw;
        }
    }
    file.seek(0);
    file.write(bytes);
    if (bytes.size() < oldSize)
        file.resize(bytes.size());
}

} // namespace Corvane
