// Another function in the place of one of the system's: what a test needs when the system it runs on lacks
// something, or has to be seen failing.
#pragma once

#include "import_slots.h"

#include <windows.h>

#include <stdexcept>
#include <string_view>

namespace Corvane::Test {

// A function of a system's DLL that is loaded, by its name.
template <class Function>
Function* systemFunction(const wchar_t* library, const char* name) {
    const auto address = ::GetProcAddress(::GetModuleHandleW(library), name);
    return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(address));
}

// As long as it lives, calls of `function` by the module, this program's own where none is given, go to
// `replacement`. The function is to be imported from a system's DLL: what its address is taken for is what
// stands in the import table.
class ImportPatch {
public:
    template <class Function>
    ImportPatch(Function* function, Function* replacement, HMODULE importer = ::GetModuleHandleW(nullptr))
        : ImportPatch(find(reinterpret_cast<void*>(function), importer), reinterpret_cast<void*>(replacement),
                      importer) {}
    // The same by the name of the function: the headers of some libraries do not declare it as imported, and
    // another stand-in may be in its place already.
    template <class Function>
    ImportPatch(const char* name, Function* replacement, HMODULE importer = ::GetModuleHandleW(nullptr))
        : ImportPatch(find(name, importer), reinterpret_cast<void*>(replacement), importer) {}
    ~ImportPatch() { put(original_); }
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    // What calls went to before. (The address of the function would be read from the table again.)
    template <class Function>
    Function* original() const noexcept {
        return reinterpret_cast<Function*>(original_);
    }

    // What a call of a function of this program reaches now: the address of one that is not declared as
    // imported is a jump through its slot.
    template <class Function>
    static Function* behind(Function* function) {
        void** slot = slotOf(reinterpret_cast<void*>(function));
        if (!slot)
            return function;
        settleSlot(::GetModuleHandleW(nullptr), *slot);
        return reinterpret_cast<Function*>(*slot);
    }

private:
    ImportPatch(void*& slot, void* replacement, HMODULE importer) : slot_(slot) {
        settleSlot(importer, slot_);
        original_ = slot_;
        put(replacement);
    }

    static void*& find(void* address, HMODULE importer) {
        void** slot = slotOf(address);
        return slot ? *slot : find(importer, [&](std::string_view, void* each) { return each == address; });
    }
    static void*& find(std::string_view name, HMODULE importer) {
        return find(importer, [&](std::string_view each, void*) { return each == name; });
    }
    template <class Test>
    static void*& find(HMODULE importer, Test test) {
        void** found = nullptr;
        forEachImport(importer,
                      [&](std::string_view name, void*& slot) { found = test(name, slot) ? &slot : found; });
        return found ? *found : throw std::runtime_error("the function is not imported");
    }

    void put(void* value) noexcept { putIntoSlot(slot_, value); }

    void*& slot_;
    void* original_ =
        nullptr;  // read from the slot: the compiler takes the function's address for a constant
};

}  // namespace Corvane::Test
