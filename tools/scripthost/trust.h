// The component's permanent list of trusted sites.
#pragma once

#include <string>

namespace ScriptHost {

// Adds the scheme and host of `address` to the current user's list. An address without them cannot be trusted
// and is passed over. Throws std::runtime_error when the registry refuses.
void trustSite(const std::wstring& address);

// The address under which the component knows a host without an HTML window: that of this program.
std::wstring plainHostAddress();

}  // namespace ScriptHost
