// An empty registry for one test: while it lives, both hives of this process lead to keys of its own.
#pragma once

#include "core/handles.h"

#include <gtest/gtest.h>

#include <string>

namespace Corvane {

class ScratchRegistry {
public:
    ScratchRegistry() {
        redirect(HKEY_LOCAL_MACHINE, L"machine");
        redirect(HKEY_CURRENT_USER, L"user");
    }
    ~ScratchRegistry() {
        ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        ::RegDeleteTreeW(HKEY_CURRENT_USER, root().c_str());
    }
    ScratchRegistry(const ScratchRegistry&) = delete;
    ScratchRegistry& operator=(const ScratchRegistry&) = delete;

    static void addValue(HKEY hive, const wchar_t* path, const std::wstring& name) {
        RegistryKey key;
        ASSERT_EQ(::RegCreateKeyW(hive, path, key.put()), ERROR_SUCCESS);
        ASSERT_EQ(::RegSetValueExW(key.get(), name.c_str(), 0, REG_SZ, nullptr, 0), ERROR_SUCCESS);
    }

    static void addText(HKEY hive, const wchar_t* path, const wchar_t* name, const std::wstring& text) {
        ASSERT_EQ(::RegSetKeyValueW(hive, path, name, REG_SZ, text.c_str(),
                                    static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
                  ERROR_SUCCESS);
    }

private:
    static std::wstring root() { return L"Software\\CorvaneTest" + std::to_wstring(::GetCurrentProcessId()); }

    static void redirect(HKEY hive, const wchar_t* name) {
        RegistryKey key;
        const std::wstring path = root() + L"\\" + name;
        ASSERT_EQ(::RegCreateKeyW(HKEY_CURRENT_USER, path.c_str(), key.put()), ERROR_SUCCESS);
        ASSERT_EQ(::RegOverridePredefKey(hive, key.get()), ERROR_SUCCESS);
    }
};

}  // namespace Corvane
