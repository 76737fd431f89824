// What support staff need to know of the machine when something does not work, in one text.
#pragma once

#include <string>

namespace Corvane::Com {

// A JSON object; its members stand in docs/support.md. A part that cannot be told has the member "error"
// instead of, or beside, what is known. Takes less than 20 seconds, whatever hangs: what then is being asked
// goes on on other threads. Asks for no PIN, shows no dialog, and connects to no card itself; changes
// nothing, but that a log that is on and has no file yet is begun. Throws std::bad_alloc, Win32Exception
// E_ACTIVEX where there are no threads, and what Module::path() throws.
std::wstring diagnose();

}  // namespace Corvane::Com
