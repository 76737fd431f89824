// What keeps the DLL loaded, and what it knows about itself.
#pragma once

#include <windows.h>

#include <string>

namespace Corvane::Com {

// Objects alive plus server locks plus whatever else must keep the code in memory. Any thread.
class Module {
public:
    static void add() noexcept;
    static void remove() noexcept;

    // Whether nothing keeps the module; what DllCanUnloadNow answers.
    static bool isIdle() noexcept;

    static HINSTANCE instance() noexcept;

    // Full path of the file the code was loaded from. Throws Win32Exception E_DIRECTORY_PATH.
    static std::wstring path();

    // Whether `object`, which some COM object returned, is made of this module's code.
    static bool owns(const void* object) noexcept;
};

// Keeps the module for as long as it lives.
class ModuleReference {
public:
    ModuleReference() noexcept { Module::add(); }
    ModuleReference(const ModuleReference&) noexcept : ModuleReference() {}
    ModuleReference& operator=(const ModuleReference&) noexcept = default;
    ~ModuleReference() { Module::remove(); }
};

}  // namespace Corvane::Com
