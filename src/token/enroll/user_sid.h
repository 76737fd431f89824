// Who runs the process.
#pragma once

#include <string>

namespace Corvane::detail {

// The security identifier of the process's user, "S-1-5-21-...". Throws Win32Exception E_CRYPTO.
std::wstring getUserSid();

}  // namespace Corvane::detail
