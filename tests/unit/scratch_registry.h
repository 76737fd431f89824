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

    static void add(HKEY hive, const std::wstring& path, const std::wstring& name,
                    const std::wstring& text = {}) {
        set(hive, path, name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
    }
    static void add(HKEY hive, const std::wstring& path, const std::wstring& name, DWORD number) {
        set(hive, path, name, REG_DWORD, &number, sizeof(number));
    }

private:
    static void set(HKEY hive, const std::wstring& path, const std::wstring& name, DWORD type,
                    const void* data, std::size_t size) {
        ASSERT_EQ(::RegSetKeyValueW(hive, path.c_str(), name.c_str(), type, data, static_cast<DWORD>(size)),
                  ERROR_SUCCESS);
    }
    static std::wstring root() { return L"Software\\CorvaneTest" + std::to_wstring(::GetCurrentProcessId()); }

    static void redirect(HKEY hive, const wchar_t* name) {
        RegistryKey key;
        const std::wstring path = root() + L"\\" + name;
        ASSERT_EQ(::RegCreateKeyW(HKEY_CURRENT_USER, path.c_str(), key.put()), ERROR_SUCCESS);
        ASSERT_EQ(::RegOverridePredefKey(hive, key.get()), ERROR_SUCCESS);
    }
};

}  // namespace Corvane
