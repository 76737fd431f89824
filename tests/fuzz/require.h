// What a fuzzer calls on every statement that must hold.
#pragma once

#include <cstdlib>

inline void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}
