// What a file dialog leaves in its result buffer.
#pragma once

#include <string>
#include <string_view>

namespace Corvane::Gui {

// The first of the buffer's strings, each ended by a NUL: the path, where one file was asked for.
[[nodiscard]] std::wstring_view firstString(std::wstring_view buffer) noexcept;

// All strings of the buffer up to an empty one, with a '|' between: a path alone, or the folder and the names
// of the files that were chosen in it. No file name on Windows holds that character.
[[nodiscard]] std::wstring joinStrings(std::wstring_view buffer);

}  // namespace Corvane::Gui
