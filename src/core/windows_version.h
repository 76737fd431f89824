#pragma once

#include <string>

namespace Corvane {

// Version of the running Windows as "major.minor.build", whatever compatibility mode the host runs in.
// Throws Exception E_GET_WINDOWS_VERSION.
std::wstring windowsVersion();

}  // namespace Corvane
