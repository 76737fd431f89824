#include "console.h"

#include "core/wide_text.h"

#include <string>

namespace ScriptHost {

void write(Stream stream, std::wstring_view text) {
    const HANDLE handle = ::GetStdHandle(static_cast<DWORD>(stream));
    DWORD mode = 0;
    if (::GetConsoleMode(handle, &mode))
        ::SetConsoleOutputCP(CP_UTF8);

    const std::string bytes = Corvane::toUtf8(text);
    std::string_view left = bytes;
    DWORD written = 0;
    while (!left.empty() &&
           ::WriteFile(handle, left.data(), static_cast<DWORD>(left.size()), &written, nullptr) &&
           written > 0)
        left.remove_prefix(written);
}

}  // namespace ScriptHost
