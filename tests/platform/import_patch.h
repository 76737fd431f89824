// Another function in the place of one of the system's: what a test needs when the system it runs on lacks
// something, or has to be seen failing.
#pragma once

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace Corvane::Test {

// A function of a system's DLL that is loaded, by its name: what the loader puts into import tables.
template <class Function>
Function* systemFunction(const wchar_t* library, const char* name) {
    const auto address = ::GetProcAddress(::GetModuleHandleW(library), name);
    return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(address));
}

// As long as it lives, calls of `function` by the module, this program's own where none is given, go to
// `replacement`. The function is to be imported from a system's DLL: its address is that which the loader has
// put into the import table.
class ImportPatch {
public:
    template <class Function>
    ImportPatch(Function* function, Function* replacement, HMODULE importer = ::GetModuleHandleW(nullptr))
        : slot_(find(reinterpret_cast<void*>(function), importer)), original_(*slot_) {
        put(reinterpret_cast<void*>(replacement));
    }
    // The same by the name of the function: the headers of some libraries do not declare it as imported, and
    // another stand-in may be in its place already.
    template <class Function>
    ImportPatch(const char* name, Function* replacement, HMODULE importer = ::GetModuleHandleW(nullptr))
        : slot_(find(name, importer)), original_(*slot_) {
        put(reinterpret_cast<void*>(replacement));
    }
    ~ImportPatch() { put(original_); }
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    // What calls went to before. (The address of the function would be read from the table again.)
    template <class Function>
    Function* original() const noexcept {
        return reinterpret_cast<Function*>(original_);
    }

private:
    static void** find(void* address, HMODULE importer) {
        auto* const module = reinterpret_cast<BYTE*>(importer);
        const auto* dos = reinterpret_cast<IMAGE_DOS_HEADER*>(module);
        const auto* headers = reinterpret_cast<IMAGE_NT_HEADERS*>(module + dos->e_lfanew);
        const auto& table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT];
        auto** const begin = reinterpret_cast<void**>(module + table.VirtualAddress);
        auto** const end = begin + table.Size / sizeof(void*);
        auto** const slot = std::find(begin, end, address);
        return slot != end ? slot : throw std::runtime_error("the function is not imported");
    }

    static void** find(const char* name, HMODULE importer) {
        auto* const module = reinterpret_cast<BYTE*>(importer);
        const auto* dos = reinterpret_cast<IMAGE_DOS_HEADER*>(module);
        const auto* headers = reinterpret_cast<IMAGE_NT_HEADERS*>(module + dos->e_lfanew);
        const auto& table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        const auto* library = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(module + table.VirtualAddress);
        for (; library->FirstThunk != 0; ++library) {
            const auto* names = reinterpret_cast<IMAGE_THUNK_DATA*>(module + library->OriginalFirstThunk);
            auto** slot = reinterpret_cast<void**>(module + library->FirstThunk);
            for (; names->u1.AddressOfData != 0; ++names, ++slot) {
                const auto* import =
                    reinterpret_cast<IMAGE_IMPORT_BY_NAME*>(module + names->u1.AddressOfData);
                if (!IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal) &&
                    std::strcmp(reinterpret_cast<const char*>(import->Name), name) == 0)
                    return slot;
            }
        }
        throw std::runtime_error("the function is not imported");
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

// The same for a function that the module looks up when it first needs it: as long as this lives, every call
// in the process goes to the replacement. The library is kept loaded meanwhile.
class EntryPatch {
public:
    template <class Function>
    EntryPatch(const wchar_t* library, const char* name, Function* replacement)
        : library_(::LoadLibraryW(library)),
          entry_(reinterpret_cast<BYTE*>(systemFunction<Function>(library, name))) {
        std::copy_n(entry_, sizeof(original_), original_);
        // jmp [rip] (x64) or push, ret (x86), with the address behind it.
#ifdef _WIN64
        BYTE jump[sizeof(original_)] = {0xFF, 0x25, 0, 0, 0, 0};
        constexpr std::size_t addressAt = 6;
#else
        BYTE jump[sizeof(original_)] = {0x68, 0, 0, 0, 0, 0xC3};
        constexpr std::size_t addressAt = 1;
#endif
        const auto target = reinterpret_cast<std::uintptr_t>(replacement);
        std::memcpy(jump + addressAt, &target, sizeof(target));
        put(jump);
    }
    ~EntryPatch() {
        put(original_);
        ::FreeLibrary(library_);
    }
    EntryPatch(const EntryPatch&) = delete;
    EntryPatch& operator=(const EntryPatch&) = delete;

private:
    void put(const BYTE* code) noexcept {
        DWORD protection = 0;
        ::VirtualProtect(entry_, sizeof(original_), PAGE_EXECUTE_READWRITE, &protection);
        std::copy_n(code, sizeof(original_), entry_);
        ::VirtualProtect(entry_, sizeof(original_), protection, &protection);
        ::FlushInstructionCache(::GetCurrentProcess(), entry_, sizeof(original_));
    }

    HMODULE library_;
    BYTE* entry_;
    BYTE original_[14];
};

}  // namespace Corvane::Test
