// The places in a module through which it calls the functions that it imports.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace Corvane::Test {

inline const IMAGE_NT_HEADERS* imageHeaders(const BYTE* base) noexcept {
    return reinterpret_cast<const IMAGE_NT_HEADERS*>(
        base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
}

// The slots of libraries that are loaded at the first call of a function, which hold until then what loads
// the library. They have a section of their own (cmake/import/delayed.ld), which begins with a table of the
// names, by their places in the image, and one of the slots.
template <class Visit>
void forEachDelayed(BYTE* base, Visit visit) {
    const IMAGE_NT_HEADERS* headers = imageHeaders(base);
    // Behind the headers, which in managed code may be those of the other bitness.
    const auto* optional = reinterpret_cast<const BYTE*>(&headers->OptionalHeader);
    const std::span sections(
        reinterpret_cast<const IMAGE_SECTION_HEADER*>(optional + headers->FileHeader.SizeOfOptionalHeader),
        headers->FileHeader.NumberOfSections);
    for (const IMAGE_SECTION_HEADER& section : sections) {
        if (std::memcmp(section.Name, ".didat\0", sizeof(section.Name)) != 0)
            continue;
        const std::span words(reinterpret_cast<ULONG_PTR*>(base + section.VirtualAddress),
                              section.Misc.VirtualSize / sizeof(void*));
        // The first name follows the tables. Other linkers' sections of this name hold something else.
        const auto first = std::ranges::find_if(words, [](ULONG_PTR word) { return word != 0; });
        const ULONG_PTR name = first != words.end() ? *first : 0;
        if (name < section.VirtualAddress || name - section.VirtualAddress >= section.Misc.VirtualSize)
            return;
        const std::size_t size = (name - section.VirtualAddress) / 2 / sizeof(void*);
        for (ULONG_PTR& word : words.first(size))
            visit(word, *reinterpret_cast<void**>(&word + size));
    }
}

// Calls `visit` with the name and the slot of each function that is imported by name.
template <class Visit>
void forEachImport(HMODULE module, Visit visit) {
    auto* const base = reinterpret_cast<BYTE*>(module);
    const auto visitNamed = [&](ULONG_PTR name, void*& slot) {
        if (name != 0 && !IMAGE_SNAP_BY_ORDINAL(name))
            visit(std::string_view(reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(base + name)->Name), slot);
    };
    const DWORD imports =
        imageHeaders(base)->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    const auto* library = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(base + imports);
    for (; imports != 0 && library->OriginalFirstThunk != 0; ++library) {
        const auto* name = reinterpret_cast<ULONG_PTR*>(base + library->OriginalFirstThunk);
        for (auto** slot = reinterpret_cast<void**>(base + library->FirstThunk); *name != 0; ++slot)
            visitNamed(*name++, *slot);
    }
    forEachDelayed(base, visitNamed);
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
