#include "source_file.h"

#include "core/handles.h"

#include <windows.h>

#include <limits>
#include <stdexcept>
#include <string_view>

namespace ScriptHost {
namespace {

std::string readBytes(const std::wstring& path) {
    const Corvane::FileHandle file(::CreateFileW(
        path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file)
        throw std::runtime_error("the file cannot be opened");
    LARGE_INTEGER size{};
    if (!::GetFileSizeEx(file.get(), &size) || size.QuadPart > std::numeric_limits<int>::max())
        throw std::runtime_error("the file is too large");
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (!::ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr) ||
        read != bytes.size())
        throw std::runtime_error("the file cannot be read");
    return bytes;
}

std::wstring decodeUtf8(std::string_view bytes) {
    if (bytes.empty())
        return {};
    const int size = static_cast<int>(bytes.size());
    std::wstring text(bytes.size(), L'\0');
    const int length =
        ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(), size, text.data(), size);
    if (length == 0)
        throw std::runtime_error("the file is not UTF-8");
    text.resize(static_cast<std::size_t>(length));
    return text;
}

// `low` is the offset of the low byte in each unit.
std::wstring decodeUtf16(std::string_view bytes, std::size_t low) {
    std::wstring text;
    text.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto lowByte = static_cast<unsigned char>(bytes[i + low]);
        const auto highByte = static_cast<unsigned char>(bytes[i + 1 - low]);
        text.push_back(static_cast<wchar_t>(highByte << 8 | lowByte));
    }
    return text;
}

}  // namespace

std::wstring readSource(const std::wstring& path) {
    const std::string bytes = readBytes(path);
    const std::string_view view = bytes;
    if (view.starts_with("\xEF\xBB\xBF"))
        return decodeUtf8(view.substr(3));
    if (view.starts_with("\xFF\xFE"))
        return decodeUtf16(view.substr(2), 0);
    if (view.starts_with("\xFE\xFF"))
        return decodeUtf16(view.substr(2), 1);
    return decodeUtf8(view);
}

}  // namespace ScriptHost
