// Another function in the place of one of the system's: what a test needs when the system it runs on lacks
// something, or has to be seen failing.
#pragma once

#include <windows.h>

#include <algorithm>
#include <stdexcept>

namespace Corvane::Test {

// As long as it lives, calls of `function` by this program's module go to `replacement`. The function is to
// be imported from a system's DLL: its address is that which the loader has put into the import table.
class ImportPatch {
public:
    template <class Function>
    ImportPatch(Function* function, Function* replacement)
        : slot_(find(reinterpret_cast<void*>(function))), original_(*slot_) {
        put(reinterpret_cast<void*>(replacement));
    }
    ~ImportPatch() { put(original_); }
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

private:
    static void** find(void* address) {
        auto* const module = reinterpret_cast<BYTE*>(::GetModuleHandleW(nullptr));
        const auto* dos = reinterpret_cast<IMAGE_DOS_HEADER*>(module);
        const auto* headers = reinterpret_cast<IMAGE_NT_HEADERS*>(module + dos->e_lfanew);
        const auto& table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT];
        auto** const begin = reinterpret_cast<void**>(module + table.VirtualAddress);
        auto** const end = begin + table.Size / sizeof(void*);
        auto** const slot = std::find(begin, end, address);
        return slot != end ? slot : throw std::runtime_error("the function is not imported");
    }

    void put(void* value) noexcept {
        DWORD protection = 0;
        ::VirtualProtect(slot_, sizeof(*slot_), PAGE_READWRITE, &protection);
        *slot_ = value;
        ::VirtualProtect(slot_, sizeof(*slot_), protection, &protection);
    }

    void** slot_;
    void* original_;  // read from the slot: the compiler takes the function's address for a constant
};

}  // namespace Corvane::Test
