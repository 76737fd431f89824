#include "com/thread_window.h"

#include "com/async_callback.h"
#include "com/module.h"
#include "com/version_text.h"
#include "core/check.h"
#include "core/lock.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace Corvane::Com {
namespace detail {

struct WindowRecord {
    ~WindowRecord() { ::CloseHandle(thread); }

    ModuleReference module;  // the window's procedure is our code
    HWND window = nullptr;
    HANDLE thread = nullptr;  // tells whether the thread has ended
    DWORD threadId = 0;
    std::size_t users = 0;  // operations under way
    // Each waits for a message, of which any will do, but for so many that found the thread's message queue
    // full.
    std::list<std::unique_ptr<AsyncCallback>> queued;
    std::size_t unposted = 0;
};

}  // namespace detail

namespace {

using detail::WindowRecord;
using SharedRecord = std::shared_ptr<WindowRecord>;

constexpr UINT deliver = WM_USER + 1;
// Asks an idle window to go; the number is not used by anybody else since the window is nobody else's.
constexpr UINT leave = WM_USER + 2;

// Guards the table of windows and everything in the records. Never held while foreign code runs.
SharedMutex tableMutex;
std::vector<SharedRecord>* table = nullptr;  // freed with its last record
bool classRegistered = false;

std::wstring className() {
    return L"Corvane" + std::wstring(versionText) + L"WindowClass";
}

// Distinct for each window: the time in milliseconds.
std::wstring windowName() {
    FILETIME now;
    ::GetSystemTimeAsFileTime(&now);
    const std::uint64_t ticks = (std::uint64_t{now.dwHighDateTime} << 32) | now.dwLowDateTime;
    return L"Corvane" + std::wstring(versionText) + L"WindowName" + std::to_wstring(ticks / 10'000);
}

SharedRecord findLocked(DWORD threadId) {
    if (!table)
        return nullptr;
    const auto found = std::find_if(table->begin(), table->end(),
                                    [&](const SharedRecord& record) { return record->threadId == threadId; });
    return found == table->end() ? nullptr : *found;
}

void eraseLocked(const SharedRecord& record) noexcept {
    std::erase(*table, record);
    if (table->empty())
        delete std::exchange(table, nullptr);
}

bool hasEnded(const WindowRecord& record) noexcept {
    return ::WaitForSingleObject(record.thread, 0) == WAIT_OBJECT_0;
}

// Takes the records of ended threads out of the table: their windows went with them. What they hold is
// destroyed by the caller, without the lock.
std::vector<SharedRecord> takeEndedLocked() {
    std::vector<SharedRecord> ended;
    if (!table)
        return ended;
    std::copy_if(table->begin(), table->end(), std::back_inserter(ended),
                 [](const SharedRecord& record) { return hasEnded(*record); });
    for (const SharedRecord& record : ended)
        eraseLocked(record);
    return ended;
}

void dropQueued(const std::vector<SharedRecord>& ended) {
    for (const SharedRecord& record : ended) {
        std::list<std::unique_ptr<AsyncCallback>> queued;
        {
            const std::lock_guard guard(tableMutex);
            queued.swap(record->queued);
        }
    }
}

// The callback whose turn it is in the calling thread's window. A message has just left the thread's queue,
// so there is room for one that is still owed.
std::unique_ptr<AsyncCallback> takeQueued() {
    const std::lock_guard guard(tableMutex);
    const SharedRecord record = findLocked(::GetCurrentThreadId());
    if (!record || record->queued.empty())
        return nullptr;
    auto taken = std::move(record->queued.front());
    record->queued.pop_front();
    if (record->unposted != 0 && ::PostMessageW(record->window, deliver, 0, 0))
        --record->unposted;
    return taken;
}

// Removes the calling thread's window if nothing is under way for it.
void leaveIfIdle() noexcept {
    SharedRecord record;
    {
        const std::lock_guard guard(tableMutex);
        record = findLocked(::GetCurrentThreadId());
        if (!record || record->users != 0)
            return;
        eraseLocked(record);
    }
    ::DestroyWindow(record->window);
}

LRESULT CALLBACK windowProcedure(HWND window, UINT message, WPARAM wide, LPARAM data) {
    switch (message) {
        case deliver:
            if (const auto callback = takeQueued())
                callback->invoke();
            return 0;
        case leave:
            leaveIfIdle();
            return 0;
        default:
            return ::DefWindowProcW(window, message, wide, data);
    }
}

void registerClassLocked() {
    if (classRegistered)
        return;
    const std::wstring name = className();
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = windowProcedure;
    windowClass.hInstance = Module::instance();
    windowClass.lpszClassName = name.c_str();
    checkWin32(::RegisterClassExW(&windowClass), E_REGISTER_WINDOW_CLASS, L"RegisterClassExW");
    classRegistered = true;
}

SharedRecord createLocked() {
    registerClassLocked();
    auto record = std::make_shared<WindowRecord>();
    record->threadId = ::GetCurrentThreadId();
    checkWin32(::DuplicateHandle(::GetCurrentProcess(), ::GetCurrentThread(), ::GetCurrentProcess(),
                                 &record->thread, SYNCHRONIZE, FALSE, 0),
               E_CREATE_WINDOW, L"DuplicateHandle");
    if (!table)
        table = new std::vector<SharedRecord>;
    table->reserve(table->size() + 1);
    record->window = checkWin32(::CreateWindowExW(0, className().c_str(), windowName().c_str(), 0, 0, 0, 0, 0,
                                                  HWND_MESSAGE, nullptr, Module::instance(), nullptr),
                                E_CREATE_WINDOW, L"CreateWindowExW");
    table->push_back(record);
    return record;
}

}  // namespace

ThreadWindow::ThreadWindow(std::shared_ptr<detail::WindowRecord> record)
    : record_(std::move(record)), place_(1) {}

ThreadWindow ThreadWindow::ofThisThread() {
    std::vector<SharedRecord> ended;
    SharedRecord record;
    {
        const std::lock_guard guard(tableMutex);
        // First, since a new thread may have got the number of one that has ended.
        ended = takeEndedLocked();
        record = findLocked(::GetCurrentThreadId());
        if (!record)
            record = createLocked();
    }
    dropQueued(ended);
    ThreadWindow window(std::move(record));
    const std::lock_guard guard(tableMutex);
    ++window.record_->users;
    return window;
}

ThreadWindow::~ThreadWindow() {
    if (!record_)
        return;
    const std::lock_guard guard(tableMutex);
    --record_->users;
}

void ThreadWindow::post(ThreadWindow& window, std::unique_ptr<AsyncCallback> callback) noexcept {
    const SharedRecord record = window.record_;
    auto place = std::move(window.place_);
    place.front() = std::move(callback);
    // Without the lock held, what could not be posted is destroyed with `place`.
    const std::lock_guard guard(tableMutex);
    record->queued.splice(record->queued.end(), place);
    if (::PostMessageW(record->window, deliver, 0, 0))
        return;
    // A thread's queue holds 10,000 messages; one that waits there for this window makes up for it.
    if (::GetLastError() == ERROR_NOT_ENOUGH_QUOTA)
        ++record->unposted;
    else
        place.splice(place.end(), record->queued, std::prev(record->queued.end()));
}

void ThreadWindow::releaseIdle() noexcept {
    std::vector<SharedRecord> ended;
    leaveIfIdle();
    {
        const std::lock_guard guard(tableMutex);
        ended = takeEndedLocked();
        if (table) {
            for (const SharedRecord& record : *table) {
                if (record->users == 0)
                    ::PostMessageW(record->window, leave, 0, 0);
            }
        } else if (std::exchange(classRegistered, false)) {
            ::UnregisterClassW(className().c_str(), Module::instance());
        }
    }
    dropQueued(ended);
}

}  // namespace Corvane::Com
