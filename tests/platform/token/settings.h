// What a test sets and what it is told, in files beside the DLL: NAME.ini, read anew at each question, and
// NAME.log.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace Corvane::Platform {

// The DLL's path with another extension.
std::wstring besideModule(const wchar_t* extension);

std::wstring setting(const wchar_t* section, const wchar_t* name, const wchar_t* otherwise = L"");
std::vector<std::wstring> sections();
void storeSetting(const wchar_t* section, const wchar_t* name, const std::wstring& value);
std::string narrow(const std::wstring& text);

void log(const std::string& line);

// What the setting "fail" of the section wants a call to return; 0 where nothing. It is "NAME=0x30", or
// "3=0x30" for the third call since the DLL was loaded, whatever it is; with "hang" behind "=" the call never
// returns.
unsigned long plannedFailure(const wchar_t* section, const char* call);

}  // namespace Corvane::Platform
