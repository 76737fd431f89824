#include "usage.h"

#include <array>

namespace robustness {
namespace {

void addHeap(HANDLE heap, Usage& usage) {
    if (!::HeapLock(heap))
        return;
    PROCESS_HEAP_ENTRY entry{};
    while (::HeapWalk(heap, &entry)) {
        if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) {
            ++usage.blocks;
            usage.heapBytes += entry.cbData;
        }
    }
    ::HeapUnlock(heap);
}

std::size_t committedPrivate() {
    std::size_t total = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (const char* address = nullptr; ::VirtualQuery(address, &region, sizeof(region)) == sizeof(region);
         address = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE)
            total += region.RegionSize;
        if (reinterpret_cast<std::size_t>(region.BaseAddress) + region.RegionSize == 0)
            break;
    }
    return total;
}

}  // namespace

Usage currentUsage() {
    Usage usage{};
    ::GetProcessHandleCount(::GetCurrentProcess(), &usage.handles);
    std::array<HANDLE, 64> heaps{};
    const DWORD count = ::GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    for (DWORD i = 0; i < count && i < heaps.size(); ++i)
        addHeap(heaps[i], usage);
    usage.privateBytes = committedPrivate();
    return usage;
}

}  // namespace robustness
