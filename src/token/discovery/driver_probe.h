// The tokens that one PKCS#11 driver sees.
#pragma once

#include "token/discovery/token.h"

#include <string>
#include <vector>

namespace Corvane::detail {

// How long a driver may take for everything.
inline constexpr DWORD probeMilliseconds = 15'000;

struct ProbedDriver {
    std::wstring path;  // of its file; empty where there is none
    std::vector<Token> tokens;
    std::wstring failure;  // why there are none; empty where the driver works
    DWORD error = 0;       // the system's number where it did not load the file
};

// Loads the module on a thread of its own and asks it. Where it does not end in time, the thread is ended, or
// left alone where it is inside the system's loader, and the module is lost for this process
// (cryptoki/module_use.h). What happened stands in the log as well. A token that cannot be read is passed
// over. Throws only std::bad_alloc and Win32Exception E_ACTIVEX where there is no thread.
ProbedDriver probeDriver(const std::wstring& name, DWORD milliseconds = probeMilliseconds);

}  // namespace Corvane::detail
