// The tokens that one PKCS#11 driver sees.
#pragma once

#include "token/discovery/token.h"

#include <string>
#include <vector>

namespace Corvane::detail {

// How long a driver may take for everything.
inline constexpr DWORD probeMilliseconds = 15'000;

// Loads the module on a thread of its own and asks it; none where there is no such module, where it fails,
// and where it does not end in time: then the thread is ended, or left alone where it is inside the system's
// loader, and the module is lost for this process (cryptoki/module_use.h). What happened stands in the log. A
// token that cannot be read is passed over. Throws only std::bad_alloc and Win32Exception E_ACTIVEX where
// there is no thread.
std::vector<Token> probeDriver(const std::wstring& name, DWORD milliseconds = probeMilliseconds);

}  // namespace Corvane::detail
