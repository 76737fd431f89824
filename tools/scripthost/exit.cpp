#include "exit.h"

#include "console.h"

#include <memory>
#include <tuple>
#include <utility>

namespace ScriptHost {
namespace {

struct Limit {
    DWORD seconds;
    std::wstring script;
};

DWORD WINAPI watch(void* parameter) {
    const std::unique_ptr<Limit> limit(static_cast<Limit*>(parameter));
    for (DWORD second = 0; second < limit->seconds; ++second)
        ::Sleep(1000);
    write(Stream::error,
          limit->script + L": stopped after " + std::to_wstring(limit->seconds) + L" seconds\n");
    // ExitProcess would wait for a thread that holds the loader's lock.
    ::TerminateProcess(::GetCurrentProcess(), timeoutStatus);
    return 0;
}

}  // namespace

void quit(UINT status) {
    ::ExitProcess(status);
}

void quitAfter(DWORD seconds, const std::wstring& script) {
    auto limit = std::make_unique<Limit>(Limit{seconds, script});
    const HANDLE thread = ::CreateThread(nullptr, 0, watch, limit.get(), 0, nullptr);
    if (!thread) {
        write(Stream::error, L"scripthost: the time limit cannot be watched\n");
        quit(failedStatus);
    }
    std::ignore = limit.release();
    ::CloseHandle(thread);
}

}  // namespace ScriptHost
