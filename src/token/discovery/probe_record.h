// What a driver is asked for on a thread that may have to be given up: the question and the answer in one
// piece of memory, which whoever of the two ends last gives back to the system. Nothing of it is allocated in
// a heap, whose lock a thread that is ended could take with it.
#pragma once

#include "token/cryptoki/cryptoki.h"
#include "token/cryptoki/library.h"

#include <atomic>
#include <string>

namespace Corvane::detail {

// Where the thread is. In those that are marked the system's loader may be holding its lock for it.
enum class ProbePhase : long {
    starting,  // loader
    loading,   // loader
    initializing,
    listing,
    describing,
    finalizing,
    unloading,  // loader
};

const wchar_t* nameOf(ProbePhase phase) noexcept;

// Whether a thread that is ended there takes no lock of the loader with it.
bool mayEnd(ProbePhase phase) noexcept;

// Whether a thread that was given up is still inside the loader. Until it comes out of there, whoever loads
// a library or looks for one waits for it.
bool isLoaderStuck() noexcept;

struct ProbedToken {
    cryptoki::StepResult result;
    CK_SLOT_INFO slot;
    CK_TOKEN_INFO token;
};

struct ProbeRecord {
    static constexpr CK_ULONG mostTokens = 64;
    static constexpr std::size_t pathSize = 32768;

    // Owned by the one who asks and the one who answers. Throws std::bad_alloc.
    static ProbeRecord* make(const std::wstring& path);
    // By each of the owners, at its end.
    void release() noexcept;
    // Tells the thread, which is left alone, that nobody waits for it any more; from here on isLoaderStuck()
    // counts it.
    void giveUp() noexcept;
    bool isGivenUp() const noexcept { return state == State::givenUp; }

    enum class State : long { running, givenUp, ended };

    wchar_t path[pathSize];
    std::atomic<long> owners;
    std::atomic<ProbePhase> phase;
    std::atomic<State> state;
    // Written by the thread, read when it has ended.
    cryptoki::StepResult result;
    CK_ULONG count;
    ProbedToken tokens[mostTokens];
};

// The thread's function: loads the module of the ProbeRecord that it is given, asks it and unloads it.
DWORD WINAPI runProbe(void* data) noexcept;

}  // namespace Corvane::detail
