// A modal dialog of our own resources, for hosts whose windows need not be seen, nor within reach.
#pragma once

#include <windows.h>

namespace Corvane::Gui {

// Shows the dialog `id` of `module` as DialogBoxParamW does and returns what it does; `procedure` ends a
// dialog that was answered with a number above 0. What cannot be shown leaves its number as the thread's last
// error.
//
// Where nobody would see it, in a service or in a task that runs without anybody logged on, it is not shown,
// since the system would wait for an answer for ever: ERROR_REQUIRES_INTERACTIVE_WINDOWSTATION. Where `owner`
// is there but the system refuses it, it is shown without an owner: a page in Internet Explorer's protected
// mode runs with low integrity, and the window of its browser is one of medium integrity in another process.
INT_PTR showDialog(HINSTANCE module, WORD id, HWND owner, DLGPROC procedure, LPARAM data) noexcept;

}  // namespace Corvane::Gui
