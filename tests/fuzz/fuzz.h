// What the fuzzers share.
#pragma once

#include "core/exception.h"

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <span>

using Input = std::span<const std::uint8_t>;

// To be called on every statement that must hold.
inline void require(bool condition) {
    if (!condition)
        std::abort();
}

// The number of the error that `action` ends with; nothing when it succeeds.
template <class Action>
std::optional<std::uint32_t> errorOf(Action&& action) {
    try {
        action();
        return std::nullopt;
    } catch (const Corvane::Exception& error) {
        return error.code();
    }
}

// For what may refuse its input with an error of this type.
template <class Error, class Action>
void tolerate(Action&& action) {
    try {
        action();
    } catch (const Error&) {
        // Not what was asked for.
    }
}

// Each fuzzer defines this.
void fuzz(Input input);

extern "C" [[gnu::used]] inline int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz({data, size});
    return 0;
}
