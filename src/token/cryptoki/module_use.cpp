#include "token/cryptoki/module_use.h"

#include "token/cryptoki/cryptoki_exception.h"

#include <memory>
#include <utility>

namespace cryptoki {

namespace detail {

struct UseRecord {
    std::wstring path;
    DWORD thread = 0;
    bool isLost = false;
    UseRecord* next = nullptr;
};

}  // namespace detail

namespace {

using detail::UseRecord;

SRWLOCK lock = SRWLOCK_INIT;
CONDITION_VARIABLE ended = CONDITION_VARIABLE_INIT;
UseRecord* uses;

class Locked {
public:
    Locked() noexcept { ::AcquireSRWLockExclusive(&lock); }
    ~Locked() { ::ReleaseSRWLockExclusive(&lock); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
};

UseRecord* find(const std::wstring& path) noexcept {
    UseRecord* record = uses;
    while (record && ::CompareStringOrdinal(record->path.c_str(), -1, path.c_str(), -1, TRUE) != CSTR_EQUAL)
        record = record->next;
    return record;
}

// Whether nobody uses the module any more; called, and returns, with the lock held.
bool awaitEnd(const std::wstring& path, DWORD milliseconds) noexcept {
    const ULONGLONG start = ::GetTickCount64();
    while (const UseRecord* other = find(path)) {
        const ULONGLONG passed = ::GetTickCount64() - start;
        if (other->isLost || other->thread == ::GetCurrentThreadId() ||
            (milliseconds != INFINITE && passed >= milliseconds))
            return false;
        const DWORD left = milliseconds == INFINITE ? INFINITE : milliseconds - static_cast<DWORD>(passed);
        ::SleepConditionVariableSRW(&ended, &lock, left, 0);
    }
    return true;
}

}  // namespace

ModuleUse::ModuleUse(std::wstring path, DWORD milliseconds) {
    auto record = std::make_unique<UseRecord>();
    record->path = std::move(path);
    record->thread = ::GetCurrentThreadId();
    {
        const Locked locked;
        if (awaitEnd(record->path, milliseconds)) {
            record->next = uses;
            uses = record_ = record.release();
        }
    }
    if (!record_)
        CryptokiCalls::fail(CKR_CRYPTOKI_ALREADY_INITIALIZED, "C_Initialize");
}

ModuleUse::ModuleUse(ModuleUse&& other) noexcept : record_(std::exchange(other.record_, nullptr)) {}

ModuleUse::~ModuleUse() {
    if (!record_)
        return;
    {
        const Locked locked;
        UseRecord** link = &uses;
        while (*link != record_)
            link = &(*link)->next;
        *link = record_->next;
    }
    delete record_;
    ::WakeAllConditionVariable(&ended);
}

void ModuleUse::lose() noexcept {
    const Locked locked;
    record_->isLost = true;
    record_ = nullptr;
    ::WakeAllConditionVariable(&ended);
}

}  // namespace cryptoki
