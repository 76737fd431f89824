// A mutex that needs no construction at run time, so that globals may hold one.
#pragma once

#include <windows.h>

namespace Corvane {

// Meets the standard's SharedMutex requirements as far as std::lock_guard and std::shared_lock ask.
class SharedMutex {
public:
    constexpr SharedMutex() noexcept = default;
    SharedMutex(const SharedMutex&) = delete;
    SharedMutex& operator=(const SharedMutex&) = delete;

    void lock() noexcept { ::AcquireSRWLockExclusive(&lock_); }
    void unlock() noexcept { ::ReleaseSRWLockExclusive(&lock_); }
    void lock_shared() noexcept { ::AcquireSRWLockShared(&lock_); }
    void unlock_shared() noexcept { ::ReleaseSRWLockShared(&lock_); }

private:
    SRWLOCK lock_ = SRWLOCK_INIT;
};

}  // namespace Corvane
