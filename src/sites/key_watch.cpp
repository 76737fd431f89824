#include "sites/key_watch.h"

#include "core/moment.h"

namespace Corvane {
namespace {

// Two seconds. The date of a key may be the same before and after a change that follows another one closely:
// how closely, the system does not say.
constexpr std::uint64_t doubtfulAge = 20'000'000;

// 0 when the key was deleted.
std::uint64_t lastChange(HKEY key) noexcept {
    FILETIME modified{};
    const LSTATUS status = ::RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                              nullptr, nullptr, nullptr, nullptr, &modified);
    return status == ERROR_SUCCESS ? toTicks(modified) : 0;
}

bool isDoubtful(std::uint64_t modified) noexcept {
    return modified + doubtfulAge > currentTicks();
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
