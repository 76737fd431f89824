// The places in a module through which it calls the functions that it imports.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace Corvane::Test {

// All of them. Those of libraries that are loaded with the module hold the functions' addresses; those of
// libraries that are loaded at the first call lie among them as the linker of MinGW places them, and hold
// until then what loads the library.
inline std::span<void*> importSlots(HMODULE module) noexcept {
    auto* const base = reinterpret_cast<BYTE*>(module);
    const auto* dos = reinterpret_cast<IMAGE_DOS_HEADER*>(base);
    const auto* headers = reinterpret_cast<IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT];
    return {reinterpret_cast<void**>(base + table.VirtualAddress), table.Size / sizeof(void*)};
}

// Calls `visit` with the name and the slot of each function that is imported by name. The table of names has
// the same layout as the slots, and each library's part of it stands as far before its slots as the first
// one's.
template <class Visit>
void forEachImport(HMODULE module, Visit visit) {
    auto* const base = reinterpret_cast<BYTE*>(module);
    const auto* dos = reinterpret_cast<IMAGE_DOS_HEADER*>(base);
    const auto* headers = reinterpret_cast<IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    const auto* library = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + table.VirtualAddress);
    if (table.VirtualAddress == 0 || library->OriginalFirstThunk == 0)
        return;
    // Backwards where another linker has placed the slots before the names.
    const auto distance = static_cast<std::ptrdiff_t>(library->FirstThunk) -
                          static_cast<std::ptrdiff_t>(library->OriginalFirstThunk);
    for (void*& slot : importSlots(module)) {
        const auto* name = reinterpret_cast<IMAGE_THUNK_DATA*>(reinterpret_cast<BYTE*>(&slot) - distance);
        if (name->u1.AddressOfData != 0 && !IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) {
            const auto* import = reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + name->u1.AddressOfData);
            visit(std::string_view(reinterpret_cast<const char*>(import->Name)), slot);
        }
    }
}

inline void putIntoSlot(void*& slot, void* value) noexcept {
    DWORD protection = 0;
    ::VirtualProtect(&slot, sizeof(slot), PAGE_READWRITE, &protection);
    slot = value;
    ::VirtualProtect(&slot, sizeof(slot), protection, &protection);
}

// The slot through which the code at the address jumps (jmp [slot]); null for other code.
inline void** slotOf(const void* address) noexcept {
    const auto* code = static_cast<const BYTE*>(address);
    if (code[0] != 0xFF || code[1] != 0x25)
        return nullptr;
    INT32 operand = 0;
    std::memcpy(&operand, code + 2, sizeof(operand));
    if constexpr (sizeof(void*) == 8)  // counted from the next instruction
        return reinterpret_cast<void**>(reinterpret_cast<INT_PTR>(code) + 6 + operand);
    else
        return reinterpret_cast<void**>(static_cast<INT_PTR>(operand));
}

// Puts the function itself into the slot of one whose library is loaded at its first call, so that this call
// does not overwrite what a test has put there.
inline void settleSlot(HMODULE module, void*& slot) noexcept {
    // Until then it leads to what follows the jump through it.
    constexpr std::ptrdiff_t jumpSize = 6;
    if (slotOf(static_cast<const BYTE*>(slot) - jumpSize) != &slot)
        return;
    forEachImport(module, [&](std::string_view name, void*& each) {
        for (const wchar_t* library :
             {L"crypt32", L"shell32", L"comdlg32", L"cryptui", L"ncrypt", L"winscard"}) {
            const FARPROC function =
                &each == &slot ? ::GetProcAddress(::LoadLibraryW(library), name.data()) : nullptr;
            if (function)
                return putIntoSlot(slot, reinterpret_cast<void*>(function));
        }
    });
}

}  // namespace Corvane::Test
