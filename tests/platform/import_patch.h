// Another function in the place of one of the system's: what a test needs when the system it runs on lacks
// something, or has to be seen failing.
#pragma once

#include "import_slots.h"

#include <windows.h>

#include <functional>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <utility>

namespace Corvane::Test {

// As long as it lives, calls of `function` by the module, this program's own where none is given, go to
// `replacement`. The function is to be imported from a system's DLL: what its address is taken for is what
// stands in the import table.
class ImportPatch {
public:
    template <class Function>
    ImportPatch(Function* function, Function* replacement, HMODULE importer = ::GetModuleHandleW(nullptr))
        : ImportPatch(importer, reinterpret_cast<void*>(function), {}, reinterpret_cast<void*>(replacement)) {
    }
    // The same by the name of the function: the headers of some libraries do not declare it as imported, and
    // another stand-in may be in its place already.
    template <class Function>
    ImportPatch(const char* name, Function* replacement, HMODULE importer = ::GetModuleHandleW(nullptr))
        : ImportPatch(importer, nullptr, name, reinterpret_cast<void*>(replacement)) {}
    ~ImportPatch() { putIntoSlot(*slot_, original_); }
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

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
    ImportPatch(HMODULE importer, void* address, std::string_view name, void* replacement)
        : slot_(address ? slotOf(address) : nullptr) {
        if (!slot_)
            forEachImport(importer, [&](std::string_view each, void*& slot) {
                if (address ? slot == address : each == name)
                    slot_ = &slot;
            });
        if (!slot_)
            throw std::runtime_error("the function is not imported");
        settleSlot(importer, *slot_);
        original_ = *slot_;
        putIntoSlot(*slot_, replacement);
    }

    void** slot_;
    void* original_ =
        nullptr;  // read from the slot: the compiler takes the function's address for a constant
};

// The same with what is at hand in the place of `function`: one of each type of function at a time.
template <class Result, class... Arguments>
class Replaced {
public:
    Replaced(Result(WINAPI* function)(Arguments...),
             std::type_identity_t<std::function<Result(Arguments...)>> work)
        : patch_(function, &call) {
        answer = std::move(work);
    }
    // The same by the name of a function that another module imports.
    Replaced(const char* name, HMODULE importer, std::function<Result(Arguments...)> work)
        : patch_(name, &call, importer) {
        answer = std::move(work);
    }

private:
    static Result WINAPI call(Arguments... arguments) { return answer(arguments...); }

    static inline std::function<Result(Arguments...)> answer;
    ImportPatch patch_;
};

}  // namespace Corvane::Test
