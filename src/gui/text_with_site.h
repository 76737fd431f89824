// The name of a site within a text, such that its end can always be read.
//
// A host's owner is told by its last labels, and whoever owns them chooses what stands before: a name that is
// cut at its end, as a control does with what has no room, shows what a stranger wants to be taken for.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace Corvane::Gui {

// `text` with `host` in the place of its first '%', for the static control `control`. A host that is too wide
// is broken into lines, after dots where there are any; where the lines are too many for the control, its
// beginning gives way to an ellipsis. Labels stand in their order whichever way their letters run. May throw
// std::bad_alloc.
std::wstring textWithSite(HWND control, std::wstring_view text, std::wstring_view host);

}  // namespace Corvane::Gui
