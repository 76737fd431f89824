// What a test sets and what it is told, in files beside the DLL: NAME.ini, read anew at each question, and
// NAME.log.
#pragma once

#include "../ber/ber.h"

#include <windows.h>

namespace Corvane::Platform {

// The DLL's path with another extension.
std::wstring besideModule(const wchar_t* extension);

std::wstring setting(const wchar_t* section, const wchar_t* name, const wchar_t* otherwise = L"");
std::vector<std::wstring> sections();
void storeSetting(const wchar_t* section, const wchar_t* name, const std::wstring& value);
std::string narrow(const std::wstring& text);
std::string hex(View bytes, const char* digits);
Bytes fromHex(const std::string& text);

// A call: what the setting "fail" of the section wants it to return, else what `body` returns. It is
// "NAME=0x30", or "3=0x30" for the third call since the DLL was loaded, whatever it is; with "hang" behind
// "=" the call never returns. Goes into the log as `name`, `what` and the outcome.
unsigned long plannedFailure(const wchar_t* section, const char* call);
void log(const std::string& line);

template <class Status, class Body>
Status logged(const wchar_t* section, const char* name, const std::string& what, Body&& body) {
    auto status = static_cast<Status>(plannedFailure(section, name));
    if (status == 0)
        status = body();
    char result[20];
    std::snprintf(result, sizeof result, " 0x%lx", static_cast<unsigned long>(status));
    log(name + what + result);
    return status;
}

}  // namespace Corvane::Platform
