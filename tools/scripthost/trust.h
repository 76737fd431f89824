// The component's permanent list of trusted sites.
#pragma once

#include <string>

namespace ScriptHost {

// Adds the scheme and host of `address` to the current user's list. Throws std::runtime_error when such an
// address can never be trusted, or the registry refuses.
void trustSite(const std::wstring& address);

// The address under which the component knows a host without an HTML window: that of this program.
std::wstring plainHostAddress();

}  // namespace ScriptHost
