#include "gui/chosen_files.h"

#include <algorithm>

namespace Corvane::Gui {

std::wstring_view firstString(std::wstring_view buffer) noexcept {
    return buffer.substr(0, buffer.find(L'\0'));
}

std::wstring joinStrings(std::wstring_view buffer) {
    std::wstring joined;
    for (std::wstring_view next = firstString(buffer); !next.empty(); next = firstString(buffer)) {
        if (!joined.empty())
            joined += L'|';
        joined += next;
        buffer.remove_prefix(std::min(next.size() + 1, buffer.size()));
    }
    return joined;
}

}  // namespace Corvane::Gui
