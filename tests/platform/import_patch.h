// Takes the place of a system function for one module of this process: what a test needs when the system it
// runs on lacks something, or has to be seen failing.
#pragma once

#include <windows.h>

#include <cstring>
#include <stdexcept>
#include <string>

namespace Corvane::Test {

// As long as it lives, calls of `function` through the import table of `module` go to `replacement`.
class ImportPatch {
public:
    template <class Function>
    ImportPatch(HMODULE module, const char* function, Function* replacement) : slot_(find(module, function)) {
        original_ = replace(reinterpret_cast<void*>(replacement));
    }
    ~ImportPatch() { replace(original_); }
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

private:
    template <class T>
    static T* at(HMODULE module, std::size_t offset) {
        return reinterpret_cast<T*>(reinterpret_cast<BYTE*>(module) + offset);
    }

    static void** find(HMODULE module, const char* function) {
        const auto* headers =
            at<IMAGE_NT_HEADERS>(module, static_cast<std::size_t>(at<IMAGE_DOS_HEADER>(module, 0)->e_lfanew));
        const IMAGE_DATA_DIRECTORY& imports =
            headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
        for (auto* library = at<IMAGE_IMPORT_DESCRIPTOR>(module, imports.VirtualAddress); library->Name != 0;
             ++library) {
            const auto* names = at<IMAGE_THUNK_DATA>(module, library->OriginalFirstThunk);
            void** slots = at<void*>(module, library->FirstThunk);
            for (; names->u1.AddressOfData != 0; ++names, ++slots) {
                if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) {
                    continue;
                }
                const auto* name = at<IMAGE_IMPORT_BY_NAME>(module, names->u1.AddressOfData);
                if (std::strcmp(reinterpret_cast<const char*>(name->Name), function) == 0) {
                    return slots;
                }
            }
        }
        throw std::runtime_error(std::string("not imported: ") + function);
    }

    void* replace(void* value) noexcept {
        DWORD protection = 0;
        ::VirtualProtect(slot_, sizeof(*slot_), PAGE_READWRITE, &protection);
        void* const before = *slot_;
        *slot_ = value;
        ::VirtualProtect(slot_, sizeof(*slot_), protection, &protection);
        return before;
    }

    void** slot_;
    void* original_;
};

}  // namespace Corvane::Test
