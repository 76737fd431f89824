// The system's dialogs for files and folders.
//
// Each waits until the user has answered and returns the choice, or an empty text when the user cancelled.
// `owner`, which may be null, cannot be used meanwhile; messages of the calling thread are dispatched. The
// process's current folder is what it was afterwards. Any thread, but one dialog at a time in the process.
// They throw
//   Win32Exception E_COMMON_DLG with ERROR_BUSY while another one is open,
//   CommDlgException E_COMMON_DLG with the system's number when the system's dialog fails,
//   Win32Exception E_COMMON_DLG_OPTIONS when the invisible dialog around it cannot be shown.
#pragma once

#include "gui/dialog_options.h"

#include <windows.h>

#include <string>
#include <string_view>

namespace Corvane::Gui {

// The full path of a file that exists.
std::wstring showOpenDialog(HWND owner, const DialogOptions& options);

// The full path of a file that exists, or the folder and the names of several files in it with '|' between.
// There is room for 32,767 of the longest names; with more, CommDlgException E_COMMON_DLG
// FNERR_BUFFERTOOSMALL.
std::wstring showMultipleOpenDialog(HWND owner, const DialogOptions& options);

// A full path to write to. The file may exist, the folder may not; nobody is asked about either. The dialog
// opens with `fileName` filled in. One of more than 259 characters is a std::length_error "File name greater
// then MAX_PATH".
std::wstring showSaveDialog(HWND owner, std::wstring_view fileName, const DialogOptions& options);

// The path of a folder. One of more than 259 characters is Exception E_COMMON_DLG.
std::wstring showSelectFolderDialog(HWND owner, const DialogOptions& options);

}  // namespace Corvane::Gui
