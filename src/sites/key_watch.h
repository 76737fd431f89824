// Tells whether a key of the registry changed, at the price of one question to the system, so that what was
// made of its values need not be made again each time.
#pragma once

#include "core/handles.h"

#include <cstdint>

namespace Corvane {

class KeyWatch {
public:
    // `path` outlives the watch.
    KeyWatch(HKEY hive, const wchar_t* path) noexcept : hive_(hive), path_(path) {}

    // False only if nobody added, changed or removed a value of the key since the last call; true in doubt,
    // at first, and while the key cannot be opened. Another key in the place of one that was renamed is
    // noticed within `reopenMilliseconds`. Used by one thread at a time.
    bool changed() noexcept;

    // The key as the last changed() found it, open for reading; null when it could not be opened. Stays the
    // watch's own.
    HKEY key() const noexcept { return key_.get(); }

    static constexpr std::uint64_t reopenMilliseconds = 1000;

private:
    HKEY hive_;
    const wchar_t* path_;
    RegistryKey key_;
    std::uint64_t opened_ = 0;    // when, in milliseconds of the system's running
    std::uint64_t modified_ = 0;  // the date of the key's last change; 0 when it is in doubt
};

}  // namespace Corvane
