#include "settings.h"

#include "../own_module.h"

#include <cstdio>

namespace Corvane::Platform {

std::wstring besideModule(const wchar_t* extension) {
    const std::wstring whole = ownPath();
    return whole.substr(0, whole.rfind(L'.')) + extension;
}

std::wstring setting(const wchar_t* section, const wchar_t* name, const wchar_t* otherwise) {
    wchar_t value[1024];
    ::GetPrivateProfileStringW(section, name, otherwise, value, 1024, besideModule(L".ini").c_str());
    return value;
}

std::vector<std::wstring> sections() {
    wchar_t names[4096];
    ::GetPrivateProfileSectionNamesW(names, 4096, besideModule(L".ini").c_str());
    std::vector<std::wstring> list;
    for (const wchar_t* name = names; *name; name += list.back().size() + 1)
        list.emplace_back(name);
    return list;
}

void storeSetting(const wchar_t* section, const wchar_t* name, const std::wstring& value) {
    ::WritePrivateProfileStringW(section, name, value.c_str(), besideModule(L".ini").c_str());
}

std::string narrow(const std::wstring& text) {
    std::string bytes(text.size() * 3, '\0');
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                           bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(size));
    return bytes;
}

std::string hex(View bytes, const char* digits) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

Bytes fromHex(const std::string& text) {
    Bytes bytes;
    for (std::size_t at = 0; at + 1 < text.size(); at += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoul(text.substr(at, 2), nullptr, 16)));
    return bytes;
}

void log(const std::string& line) {
    if (FILE* file = ::_wfopen(besideModule(L".log").c_str(), L"ab")) {
        std::fprintf(file, "%s\n", line.c_str());
        std::fclose(file);
    }
}

unsigned long plannedFailure(const wchar_t* section, const char* call) {
    static unsigned long calls;
    const std::wstring plan = setting(section, L"fail");
    const std::string which = narrow(plan.substr(0, plan.find(L'=')));
    if (which != std::to_string(++calls) && which != call)
        return 0;
    const std::wstring what = plan.substr(plan.find(L'=') + 1);
    if (what == L"hang") {
        log(std::string(call) + " hangs");
        ::Sleep(INFINITE);
    }
    return std::stoul(what, nullptr, 0);
}

}  // namespace Corvane::Platform
