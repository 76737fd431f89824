// Whatever was thrown, as the text that a script gets to see.
#pragma once

#include <exception>
#include <string>

namespace Corvane {

// The full message of an exception of the component's own; of others what(), in the thread's code page.
std::wstring textOf(const std::exception& exception);

// The same for a caught one; for what is no std::exception the message of E_ACTIVEX.
std::wstring textOf(const std::exception_ptr& error);

}  // namespace Corvane
