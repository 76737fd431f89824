// One owner for everything the system hands out and wants back.
#pragma once

#include <windows.h>

#include <utility>

namespace Corvane {

// Restores the thread's last error, so that cleaning up does not disturb an error about to be reported.
class LastErrorKeeper {
public:
    LastErrorKeeper() noexcept : error_(::GetLastError()) {}
    ~LastErrorKeeper() { ::SetLastError(error_); }
    LastErrorKeeper(const LastErrorKeeper&) = delete;
    LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;

private:
    DWORD error_;
};

// Sole owner of a system handle. Traits: `Type`, `static Type invalid()`, `static void close(Type)`. `Type`
// may be a structure with ==, for a handle that is nothing without another one (a session and the functions
// of its module). Closing never throws and keeps the thread's last error.
template <class Traits>
class UniqueHandle {
public:
    using Type = typename Traits::Type;

    UniqueHandle() noexcept = default;
    explicit UniqueHandle(Type value) noexcept : value_(value) {}
    UniqueHandle(UniqueHandle&& other) noexcept : value_(other.detach()) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        if (this != &other)
            attach(other.detach());
        return *this;
    }
    UniqueHandle(const UniqueHandle&) = delete;
    UniqueHandle& operator=(const UniqueHandle&) = delete;
    ~UniqueHandle() { reset(); }

    explicit operator bool() const noexcept { return value_ != Traits::invalid(); }
    Type get() const noexcept { return value_; }

    // Where a system call may store a new handle; what was owned before is closed first.
    Type* put() noexcept {
        reset();
        return &value_;
    }

    void attach(Type value) noexcept {
        reset();
        value_ = value;
    }

    [[nodiscard]] Type detach() noexcept { return std::exchange(value_, Traits::invalid()); }

    void reset() noexcept {
        if (value_ == Traits::invalid())
            return;
        const LastErrorKeeper keeper;
        Traits::close(detach());
    }

private:
    Type value_ = Traits::invalid();
};

}  // namespace Corvane
