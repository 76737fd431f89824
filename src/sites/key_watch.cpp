#include "sites/key_watch.h"

namespace Corvane {
namespace {

// Dates move in steps of many milliseconds. Of a change as young as this, in units of 100 ns, nobody knows
// whether it is the last one that will have its date.
constexpr std::uint64_t doubtfulAge = 20'000'000;

std::uint64_t toNumber(const FILETIME& date) noexcept {
    return (std::uint64_t{date.dwHighDateTime} << 32) | date.dwLowDateTime;
}

// 0 when the key was deleted.
std::uint64_t lastChange(HKEY key) noexcept {
    FILETIME modified{};
    const LSTATUS status = ::RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                              nullptr, nullptr, nullptr, nullptr, &modified);
    return status == ERROR_SUCCESS ? toNumber(modified) : 0;
}

bool isDoubtful(std::uint64_t modified) noexcept {
    FILETIME now{};
    ::GetSystemTimeAsFileTime(&now);
    return modified + doubtfulAge > toNumber(now);
}

}  // namespace

bool KeyWatch::changed() noexcept {
    const std::uint64_t now = ::GetTickCount64();
    if (modified_ != 0 && now - opened_ < reopenMilliseconds && lastChange(key_.get()) == modified_)
        return false;

    modified_ = 0;
    opened_ = now;
    if (::RegOpenKeyExW(hive_, path_, 0, KEY_READ, key_.put()) == ERROR_SUCCESS) {
        const std::uint64_t modified = lastChange(key_.get());
        modified_ = isDoubtful(modified) ? 0 : modified;
    }
    return true;
}

}  // namespace Corvane
