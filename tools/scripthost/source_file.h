// Script sources: UTF-8, with or without a byte order mark, or UTF-16 with one.
#pragma once

#include <string>

namespace ScriptHost {

// The file's text. Throws std::runtime_error, with a message that names no file, when it cannot be read or
// decoded.
std::wstring readSource(const std::wstring& path);

}  // namespace ScriptHost
