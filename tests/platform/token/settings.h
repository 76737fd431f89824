// What a test sets and what it is told, in files beside the DLL: NAME.ini, read anew at each question, and
// NAME.log.
#pragma once

#include "../ber/ber.h"
#include "../own_module.h"

#include <cstdio>
#include <fstream>

namespace Corvane::Platform {

// The DLL's path with another extension.
inline std::wstring besideModule(const wchar_t* extension) {
    const std::wstring whole = ownPath();
    return whole.substr(0, whole.rfind(L'.')) + extension;
}

inline std::wstring setting(const wchar_t* section, const wchar_t* name, const wchar_t* otherwise = L"") {
    wchar_t value[1024];
    ::GetPrivateProfileStringW(section, name, otherwise, value, 1024, besideModule(L".ini").c_str());
    return value;
}

// ASCII.
inline std::string narrow(const std::wstring& text) {
    return {text.begin(), text.end()};
}

inline std::string hex(View bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += "0123456789ABCDEF"[byte >> 4];
        text += "0123456789ABCDEF"[byte & 15];
    }
    return text;
}

inline Bytes fromHex(const std::string& text) {
    Bytes bytes;
    for (std::size_t at = 0; at + 1 < text.size(); at += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(text.substr(at, 2), nullptr, 16)));
    return bytes;
}

inline void log(const std::string& line) {
    std::ofstream(narrow(besideModule(L".log")), std::ios::app | std::ios::binary) << line << '\n';
}

// What the setting "fail" of the section wants a call to return. It is "NAME=0x30", or "3=0x30" for the third
// call since the DLL was loaded, whatever it is; with "hang" behind "=" the call never returns.
inline unsigned long plannedFailure(const wchar_t* section, const char* call) {
    static unsigned long calls;
    const std::string plan = narrow(setting(section, L"fail"));
    const std::string which = plan.substr(0, plan.find('='));
    if (which != std::to_string(++calls) && which != call)
        return 0;
    const std::string what = plan.substr(plan.find('=') + 1);
    if (what == "hang") {
        log(std::string(call) + " hangs");
        ::Sleep(INFINITE);
    }
    return std::stoul(what, nullptr, 0);
}

// A call that fails as planned, else returns what `body` does. Goes into the log as `name`, `what` and the
// outcome.
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
