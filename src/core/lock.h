// The one mutex of the component. The standard library's mutexes, as MinGW has them, allocate at their first
// use and give nothing back when they are destroyed, so objects must not hold them.
#pragma once

#ifdef _WIN32
#include <windows.h>
#else
#include <shared_mutex>
#endif

namespace Corvane {

#ifdef _WIN32

// Needs no construction at run time, so that globals may hold one. Meets the standard's SharedMutex
// requirements as far as std::lock_guard, std::unique_lock and std::shared_lock ask.
class SharedMutex {
public:
    constexpr SharedMutex() noexcept = default;
    SharedMutex(const SharedMutex&) = delete;
    SharedMutex& operator=(const SharedMutex&) = delete;

    void lock() noexcept { ::AcquireSRWLockExclusive(&lock_); }
    bool try_lock() noexcept { return ::TryAcquireSRWLockExclusive(&lock_) != FALSE; }
    void unlock() noexcept { ::ReleaseSRWLockExclusive(&lock_); }
    void lock_shared() noexcept { ::AcquireSRWLockShared(&lock_); }
    void unlock_shared() noexcept { ::ReleaseSRWLockShared(&lock_); }

private:
    SRWLOCK lock_ = SRWLOCK_INIT;
};

#else

using SharedMutex = std::shared_mutex;

#endif

}  // namespace Corvane
