// Ways in which the process ends before the script does.
#pragma once

#include <windows.h>

#include <string>

namespace ScriptHost {

// Exit statuses of our own; a script chooses others with WScript.Quit.
inline constexpr UINT failedStatus = 1;
inline constexpr UINT timeoutStatus = 124;

// Ends the process at once, from any depth of calls; objects are not released.
[[noreturn]] void quit(UINT status);

// Ends the process with timeoutStatus and a line on the error stream once `seconds` have passed, whatever its
// threads are doing then.
void quitAfter(DWORD seconds, const std::wstring& script);

}  // namespace ScriptHost
