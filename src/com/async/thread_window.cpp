#include "com/async/thread_window.h"

#include "com/async/async_callback.h"
#include "com/runtime/module.h"
#include "core/check.h"
#include "core/handles.h"
#include "core/lock.h"
#include "core/moment.h"
#include "core/version.h"

#include <algorithm>
#include <mutex>
#include <string>

namespace Corvane::Com {
namespace detail {

struct WindowRecord {
    ModuleReference module;  // the window's procedure is our code
    HWND window = nullptr;
    ComPtr<IGlobalInterfaceTable> interfaces;
    ThreadHandle thread;  // tells whether the thread has ended; until it is closed nobody gets its number
    DWORD threadId = ::GetCurrentThreadId();
    std::size_t users = 0;  // operations under way
    CallbackQueue queued;
    bool announced = false;  // a message about `queued` is on its way
    bool threadEnded = false;
};

}  // namespace detail

namespace {

using detail::CallbackQueue;
using detail::WindowRecord;
using SharedRecord = std::shared_ptr<WindowRecord>;
using Records = std::list<SharedRecord>;

constexpr UINT deliver = WM_USER + 1;
// Our own window, so any number from WM_USER on is free. Tells a window that has nothing left to do to go.
constexpr UINT leave = WM_USER + 2;
// Sent when the thread's queue is full and `deliver` cannot be posted: the window sets a timer instead.
constexpr UINT deliverLater = WM_USER + 3;
constexpr UINT laterMilliseconds = 10;

// How many callbacks one message calls at the most, so that a thread with many of them sees other messages
// too.
constexpr int calledAtOnce = 16;

// Guards what follows and everything in the records. Never held while foreign code runs.
SharedMutex tableMutex;
Records* table = nullptr;  // freed with its last record
bool classRegistered = false;
int windowsInMaking = 0;

constexpr wchar_t className[] = L"Corvane" CORVANE_VERSION_TEXT L"WindowClass";

// Distinct for each window: the time in milliseconds.
std::wstring windowName() {
    return L"Corvane" CORVANE_VERSION_TEXT L"WindowName" + std::to_wstring(currentTicks() / 10'000);
}

SharedRecord findLocked(DWORD threadId) noexcept {
    if (!table)
        return nullptr;
    const auto found = std::find_if(table->begin(), table->end(),
                                    [&](const SharedRecord& record) { return record->threadId == threadId; });
    return found == table->end() ? nullptr : *found;
}

// Moves records out of the table.
template <class Wanted>
Records takeLocked(Wanted wanted) noexcept {
    Records taken;
    if (!table)
        return taken;
    for (auto record = table->begin(); record != table->end();) {
        const auto next = std::next(record);
        if (wanted(**record))
            taken.splice(taken.end(), *table, record);
        record = next;
    }
    if (table->empty())
        delete std::exchange(table, nullptr);
    return taken;
}

// Frees what is left of threads that have ended; their windows went with them.
void forgetEnded() noexcept {
    CallbackQueue queued;
    Records ended;
    const std::lock_guard guard(tableMutex);
    ended = takeLocked([](const WindowRecord& record) {
        return ::WaitForSingleObject(record.thread.get(), 0) == WAIT_OBJECT_0;
    });
    for (const SharedRecord& record : ended) {
        record->threadEnded = true;
        queued.splice(queued.end(), record->queued);
    }
}

// Sees to it that the window's thread is told of what is queued. Any thread.
void announceLocked(WindowRecord& record) noexcept {
    if (record.announced || record.queued.empty())
        return;
    // A thread's queue takes 10,000 posted messages and no more; sent ones and timers have no such limit.
    record.announced = ::PostMessageW(record.window, deliver, 0, 0) ||
                       ::SendNotifyMessageW(record.window, deliverLater, 0, 0);
}

// The next callback of the calling thread's window.
std::unique_ptr<AsyncCallback> takeQueued(bool messageArrived) noexcept {
    const std::lock_guard guard(tableMutex);
    const SharedRecord record = findLocked(::GetCurrentThreadId());
    if (!record)
        return nullptr;
    if (messageArrived)
        record->announced = false;
    if (record->queued.empty())
        return nullptr;
    auto callback = std::move(record->queued.front());
    record->queued.pop_front();
    // Now, for the callback may pump messages itself.
    announceLocked(*record);
    return callback;
}

void callQueued() noexcept {
    for (int i = 0; i < calledAtOnce; ++i) {
        const auto callback = takeQueued(i == 0);
        if (!callback)
            return;
        callback->invoke();
    }
}

// Removes the calling thread's window if nothing is under way for it.
void leaveIfIdle() noexcept {
    Records own;
    {
        const std::lock_guard guard(tableMutex);
        own = takeLocked([](const WindowRecord& record) {
            return record.threadId == ::GetCurrentThreadId() && record.users == 0;
        });
    }
    for (const SharedRecord& record : own)
        ::DestroyWindow(record->window);
}

LRESULT CALLBACK windowProcedure(HWND window, UINT message, WPARAM wide, LPARAM data) {
    switch (message) {
        case WM_TIMER:
            ::KillTimer(window, wide);
            [[fallthrough]];
        case deliver:
            callQueued();
            return 0;
        case deliverLater:
            ::SetTimer(window, deliverLater, laterMilliseconds, nullptr);
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
    WNDCLASSEXW windowClass{};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = windowProcedure;
    windowClass.hInstance = Module::instance();
    windowClass.lpszClassName = className;
    bool made = ::RegisterClassExW(&windowClass) != 0;
    if (!made && ::GetLastError() == ERROR_CLASS_ALREADY_EXISTS) {
        // Left by an earlier load of the DLL, which was freed without being asked whether it could be. Where
        // a window of it lives on, the class does too; it serves if the code lies where it lay.
        WNDCLASSEXW present{};
        present.cbSize = sizeof(present);
        made = ::UnregisterClassW(className, Module::instance())
                   ? ::RegisterClassExW(&windowClass) != 0
                   : ::GetClassInfoExW(Module::instance(), className, &present) &&
                         present.lpfnWndProc == windowProcedure;
    }
    checkWin32(made, E_REGISTER_WINDOW_CLASS, L"RegisterClassExW");
    classRegistered = true;
}

// Keeps the window class registered while a window is being made, which happens without the lock.
class ClassUse {
public:
    ClassUse() {
        const std::lock_guard guard(tableMutex);
        registerClassLocked();
        ++windowsInMaking;
    }
    ~ClassUse() {
        const std::lock_guard guard(tableMutex);
        --windowsInMaking;
    }
    ClassUse(const ClassUse&) = delete;
    ClassUse& operator=(const ClassUse&) = delete;
};

// A record of the calling thread with its window, not yet in the table.
SharedRecord create() {
    auto record = std::make_shared<WindowRecord>();
    checkWin32(::DuplicateHandle(::GetCurrentProcess(), ::GetCurrentThread(), ::GetCurrentProcess(),
                                 record->thread.put(), SYNCHRONIZE, FALSE, 0),
               E_CREATE_WINDOW, L"DuplicateHandle");
    checkHresult(::CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                                    IID_IGlobalInterfaceTable, record->interfaces.putVoid()),
                 E_ACTIVEX, L"CoCreateInstance");
    const ClassUse use;
    record->window = checkWin32(::CreateWindowExW(0, className, windowName().c_str(), 0, 0, 0, 0, 0,
                                                  HWND_MESSAGE, nullptr, Module::instance(), nullptr),
                                E_CREATE_WINDOW, L"CreateWindowExW");
    return record;
}

// The record of the calling thread, with one more user; null when it has none.
SharedRecord useExisting() noexcept {
    const std::lock_guard guard(tableMutex);
    SharedRecord record = findLocked(::GetCurrentThreadId());
    if (record)
        ++record->users;
    return record;
}

SharedRecord useNew() {
    forgetEnded();
    Records place;
    auto room = std::make_unique<Records>();
    place.emplace_back();
    place.front() = create();
    SharedRecord record = place.front();
    const std::lock_guard guard(tableMutex);
    if (!table)
        table = room.release();
    table->splice(table->end(), place);
    ++record->users;
    return record;
}

}  // namespace

ThreadWindow::ThreadWindow(std::shared_ptr<detail::WindowRecord> record, CallbackQueue place) noexcept
    : record_(std::move(record)), place_(std::move(place)) {}

ThreadWindow ThreadWindow::ofThisThread() {
    CallbackQueue place(1);
    SharedRecord record = useExisting();
    return ThreadWindow(record ? std::move(record) : useNew(), std::move(place));
}

ThreadWindow::~ThreadWindow() {
    if (!record_)
        return;
    const std::lock_guard guard(tableMutex);
    --record_->users;
}

IGlobalInterfaceTable& ThreadWindow::interfaces() const noexcept {
    return *record_->interfaces;
}

void ThreadWindow::post(ThreadWindow& window, std::unique_ptr<AsyncCallback> callback) noexcept {
    // A plain reference: a shared pointer of our own could be the last one, and would then keep the module
    // loaded after everything is done. The callback holds one, and cannot go while we hold the lock.
    WindowRecord& record = *window.record_;
    // What cannot be delivered any more is destroyed with `place`, without the lock.
    auto place = std::move(window.place_);
    place.front() = std::move(callback);
    const std::lock_guard guard(tableMutex);
    if (record.threadEnded)
        return;
    record.queued.splice(record.queued.end(), place);
    announceLocked(record);
}

void ThreadWindow::releaseIdle() noexcept {
    leaveIfIdle();
    forgetEnded();
    const std::lock_guard guard(tableMutex);
    if (table) {
        for (const SharedRecord& record : *table) {
            if (record->users == 0)
                ::PostMessageW(record->window, leave, 0, 0);
        }
    } else if (classRegistered && windowsInMaking == 0) {
        // A window may still be on its way out.
        classRegistered = !::UnregisterClassW(className, Module::instance());
    }
}

}  // namespace Corvane::Com
