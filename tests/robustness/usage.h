// What this process holds of the system's memory and handles.
#pragma once

#include <windows.h>

#include <cstddef>

namespace robustness {

struct Usage {
    DWORD handles;
    std::size_t blocks;        // in use, in all heaps
    std::size_t heapBytes;     // in those blocks
    std::size_t privateBytes;  // committed, whatever for
};

Usage currentUsage();

}  // namespace robustness
