#include "com/runtime/module.h"

#include "core/check.h"

#include <atomic>
#include <cstring>
#include <functional>

// The linker's name for the start of the image that this code is linked into.
extern "C" const char __ImageBase[];  // NOLINT(bugprone-reserved-identifier): the linker's name

namespace Corvane::Com {
namespace {

std::atomic<long> references{0};

std::size_t imageSize() noexcept {
    IMAGE_DOS_HEADER start;
    std::memcpy(&start, __ImageBase, sizeof(start));
    IMAGE_NT_HEADERS headers;
    std::memcpy(&headers, __ImageBase + start.e_lfanew, sizeof(headers));
    return headers.OptionalHeader.SizeOfImage;
}

}  // namespace

void Module::add() noexcept {
    references.fetch_add(1, std::memory_order_relaxed);
}

void Module::remove() noexcept {
    references.fetch_sub(1, std::memory_order_release);
}

bool Module::isIdle() noexcept {
    return references.load(std::memory_order_acquire) == 0;
}

HINSTANCE Module::instance() noexcept {
    return reinterpret_cast<HINSTANCE>(const_cast<char*>(__ImageBase));
}

std::wstring Module::path() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(instance(), path.data(), static_cast<DWORD>(path.size()));
        checkWin32(length, E_DIRECTORY_PATH, L"GetModuleFileNameW");
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

bool Module::owns(const void* object) noexcept {
    // Any COM object begins with the address of its table of methods.
    const char* table = nullptr;
    std::memcpy(&table, object, sizeof(table));
    return std::less_equal<>{}(__ImageBase, table) && std::less<>{}(table, __ImageBase + imageSize());
}

}  // namespace Corvane::Com
