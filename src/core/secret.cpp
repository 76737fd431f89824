#include "core/secret.h"

#include <cstring>

namespace Corvane {

void wipe(void* memory, std::size_t size) noexcept {
    if (size == 0)
        return;
    std::memset(memory, 0, size);
    // Says that the memory is read here, so that the call above stays.
    asm volatile("" : : "r"(memory) : "memory");
}

}  // namespace Corvane
