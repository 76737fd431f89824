// Values as WScript.Echo shows them.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string>

namespace ScriptHost {

// Automation's own conversion, as in the system's hosts: a boolean is -1 or 0, a date is in the user's
// format, an object is its default value. Null is "null", and a value that was never set is `unset`. Throws
// CallError for a value without a text.
std::wstring valueText(const VARIANT& value, const wchar_t* unset);

}  // namespace ScriptHost
