// Gives back what the C++ runtime that is linked into the DLL takes from the system.
//
// It takes a thread-local slot and some kernel objects at its first use and, being made for programs, keeps
// them until the process ends. A host may load and free the DLL many times; a process has 1,088 slots, and
// when they are used up the runtime aborts the host. So its calls of the functions below are led through this
// file, which remembers what it was given, and what is left is freed when the runtime itself has been shut
// down.
#include <windows.h>

#include <array>
#include <atomic>
#include <cstdint>

namespace {

// The name under which code that is linked in looks for an imported function: 32-bit names tell how many
// bytes of arguments there are.
#ifdef _WIN64
#define CORVANE_IMPORT(name, bytes) asm("__imp_" name)
#else
#define CORVANE_IMPORT(name, bytes) asm("__imp__" name "@" bytes)
#endif

// Zero is an empty place. More than there is room for is not remembered, and lost at the end.
template <class T>
class Taken {
public:
    void add(T value) noexcept { replace(T{}, value); }
    void remove(T value) noexcept { replace(value, T{}); }

    template <class Free>
    void freeAll(Free free) noexcept {
        for (std::atomic<T>& place : places_) {
            if (const T value = place.exchange(T{}); value != T{})
                free(value);
        }
    }

private:
    void replace(T from, T to) noexcept {
        for (std::atomic<T>& place : places_) {
            T expected = from;
            if (place.compare_exchange_strong(expected, to))
                return;
        }
    }

    std::array<std::atomic<T>, 512> places_{};
};

// Slots are kept as their number and one.
constinit Taken<std::uint32_t> slots;
constinit Taken<HANDLE> handles;

// The system's own function; the import of that name is the one below.
template <class Function>
Function* systemFunction(const char* name) noexcept {
    const auto address =
        reinterpret_cast<void (*)()>(::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), name));
    return reinterpret_cast<Function*>(address);
}

HANDLE remember(HANDLE handle) noexcept {
    if (handle)
        handles.add(handle);
    return handle;
}

DWORD WINAPI tlsAlloc() {
    const DWORD slot = systemFunction<decltype(::TlsAlloc)>("TlsAlloc")();
    if (slot != TLS_OUT_OF_INDEXES)
        slots.add(slot + 1);
    return slot;
}

BOOL WINAPI tlsFree(DWORD slot) {
    slots.remove(slot + 1);
    return systemFunction<decltype(::TlsFree)>("TlsFree")(slot);
}

HANDLE WINAPI createEvent(SECURITY_ATTRIBUTES* attributes, BOOL manual, BOOL set, const char* name) {
    return remember(systemFunction<decltype(::CreateEventA)>("CreateEventA")(attributes, manual, set, name));
}

HANDLE WINAPI createSemaphore(SECURITY_ATTRIBUTES* attributes, LONG count, LONG most, const char* name) {
    return remember(
        systemFunction<decltype(::CreateSemaphoreA)>("CreateSemaphoreA")(attributes, count, most, name));
}

BOOL WINAPI duplicateHandle(HANDLE from, HANDLE handle, HANDLE to, HANDLE* copy, DWORD access, BOOL inherit,
                            DWORD options) {
    const BOOL made = systemFunction<decltype(::DuplicateHandle)>("DuplicateHandle")(
        from, handle, to, copy, access, inherit, options);
    if (made && copy)
        remember(*copy);
    return made;
}

BOOL WINAPI closeHandle(HANDLE handle) {
    static std::atomic<decltype(::CloseHandle)*> close{nullptr};
    auto* function = close.load(std::memory_order_relaxed);
    if (!function)
        close.store(function = systemFunction<decltype(::CloseHandle)>("CloseHandle"),
                    std::memory_order_relaxed);
    handles.remove(handle);
    return function(handle);
}

}  // namespace

extern "C" {

extern decltype(&tlsAlloc) const importTlsAlloc CORVANE_IMPORT("TlsAlloc", "0");
decltype(&tlsAlloc) const importTlsAlloc = tlsAlloc;
extern decltype(&tlsFree) const importTlsFree CORVANE_IMPORT("TlsFree", "4");
decltype(&tlsFree) const importTlsFree = tlsFree;
extern decltype(&createEvent) const importCreateEvent CORVANE_IMPORT("CreateEventA", "16");
decltype(&createEvent) const importCreateEvent = createEvent;
extern decltype(&createSemaphore) const importCreateSemaphore CORVANE_IMPORT("CreateSemaphoreA", "16");
decltype(&createSemaphore) const importCreateSemaphore = createSemaphore;
extern decltype(&duplicateHandle) const importDuplicateHandle CORVANE_IMPORT("DuplicateHandle", "28");
decltype(&duplicateHandle) const importDuplicateHandle = duplicateHandle;
extern decltype(&closeHandle) const importCloseHandle CORVANE_IMPORT("CloseHandle", "4");
decltype(&closeHandle) const importCloseHandle = closeHandle;

// The runtime's own entry point.
BOOL WINAPI DllMainCRTStartup(HINSTANCE instance, DWORD reason, void* processEnds);

// The entry point of the DLL.
BOOL WINAPI corvaneEntryPoint(HINSTANCE instance, DWORD reason, void* processEnds) {
    const BOOL result = DllMainCRTStartup(instance, reason, processEnds);
    // At the end of the process the system takes everything back itself.
    if (reason == DLL_PROCESS_DETACH && !processEnds) {
        handles.freeAll(
            [](HANDLE handle) { systemFunction<decltype(::CloseHandle)>("CloseHandle")(handle); });
        slots.freeAll([](std::uint32_t slot) { systemFunction<decltype(::TlsFree)>("TlsFree")(slot - 1); });
    }
    return result;
}

}  // extern "C"
