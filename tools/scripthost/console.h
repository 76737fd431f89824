// The standard streams, in UTF-8 whatever they lead to.
#pragma once

#include <windows.h>

#include <string_view>

namespace ScriptHost {

enum class Stream : DWORD { output = STD_OUTPUT_HANDLE, error = STD_ERROR_HANDLE };

// Writes all of `text` at once; lines end in "\n". A stream that cannot be written to swallows it. Any
// thread.
void write(Stream stream, std::wstring_view text);

}  // namespace ScriptHost
