// The command line.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace ScriptHost {

struct Options {
    bool help = false;
    bool trust = false;
    DWORD timeoutSeconds = 0;             // 0: no limit
    std::wstring url;                     // empty: a plain host, without an HTML window
    std::vector<std::wstring> includes;   // scripts that run before the main one
    std::vector<std::wstring> libraries;  // DLLs that are loaded first
    std::wstring script;                  // the main script
    std::vector<std::wstring> arguments;  // WScript.Arguments
};

extern const wchar_t helpText[];

// Throws std::invalid_argument with a message for the user.
Options parseOptions(const std::vector<std::wstring>& words);

}  // namespace ScriptHost
