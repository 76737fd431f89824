// Every call of a family fails once in turn, and what the calls gave is counted until it is given back.
#pragma once

#include "core/handle.h"
#include "platform/import_patch.h"
#include "support.h"

#include <windows.h>

#include <wincrypt.h>

#include <string>
#include <type_traits>
#include <vector>

namespace Corvane::Test {

// The call that fails, counted from 1; 0 for none. Handles that are open.
struct ApiFaults {
    static constexpr DWORD error = ERROR_GEN_FAILURE;

    static inline bool armed = false;
    static inline int failing = 0;
    static inline int calls = 0;
    static inline int open = 0;

    static bool fails() {
        if (!armed || ++calls != failing)
            return false;
        ::SetLastError(error);
        return true;
    }
};

template <int number>
using ApiNumber = std::integral_constant<int, number>;

// Puts a function between this program and the system's, as long as it lives: one that can fail, and whose
// success opens `opened` handles. Each has a number of its own.
template <int number, class Result, class... Arguments>
class FailingApi {
public:
    FailingApi(ApiNumber<number>, Result(WINAPI* function)(Arguments...), int opened = 0)
        : patch_(function, &replacement) {
        currentPatch = &patch_;
        openedHandles = opened;
    }

private:
    static Result WINAPI replacement(Arguments... arguments) {
        if (openedHandles >= 0 && ApiFaults::fails())
            return Result{};
        const Result result = currentPatch->original<Result WINAPI(Arguments...)>()(arguments...);
        if (result && !wasDeletion(arguments...))
            ApiFaults::open += openedHandles;
        return result;
    }

    // CryptAcquireContext that takes a container away gives no handle.
    template <class... Others>
    // NOLINTNEXTLINE(readability-non-const-parameter): chosen by its type
    static bool wasDeletion(HCRYPTPROV* handle, const Others&...) {
        return *handle == 0;
    }
    template <class... Others>
    static bool wasDeletion(const Others&...) {
        return false;
    }

    static inline ImportPatch* currentPatch = nullptr;
    static inline int openedHandles = 0;
    ImportPatch patch_;
};

// The codes with which `work` ends when its first call fails, its second, and so on; equal ones that follow
// each other once. Ends where it succeeds. Nothing may be left open in between. `prepare` comes before each
// time, and its calls do not fail.
template <class Work, class Prepare>
std::vector<std::uint32_t> codesOfFaults(Work&& work, Prepare&& prepare) {
    std::vector<std::uint32_t> codes;
    ApiFaults::open = 0;
    for (ApiFaults::failing = 1;; ++ApiFaults::failing) {
        ApiFaults::calls = 0;
        prepare();
        ApiFaults::armed = true;
        const Failure failure = failureOf(work);
        ApiFaults::armed = false;
        if (ApiFaults::open != 0)
            throw std::runtime_error("handles are open after call " + std::to_string(ApiFaults::failing));
        if (ApiFaults::calls < ApiFaults::failing)
            return codes;
        if (codes.empty() || codes.back() != failure.first)
            codes.push_back(failure.first);
    }
}

template <class Work>
std::vector<std::uint32_t> codesOfFaults(Work&& work) {
    return codesOfFaults(work, [] {});
}

}  // namespace Corvane::Test
