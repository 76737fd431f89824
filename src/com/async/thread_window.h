// The hidden window of a thread that started asynchronous operations. Their outcomes are posted to it, so
// that they are delivered on that thread whenever it pumps messages.
#pragma once

#include <windows.h>

#include <objidl.h>

#include <list>
#include <memory>

class AsyncCallback;

namespace Corvane::Com {

namespace detail {
struct WindowRecord;
using CallbackQueue = std::list<std::unique_ptr<AsyncCallback>>;
}  // namespace detail

// A share in the window of the thread that made it; the window stays at least as long. Any thread may hold
// it.
class ThreadWindow {
public:
    // The window of the calling thread, created at the thread's first call. Throws Win32Exception
    // E_REGISTER_WINDOW_CLASS, E_CREATE_WINDOW; ComException E_ACTIVEX when the thread is in no apartment.
    static ThreadWindow ofThisThread();

    ThreadWindow(ThreadWindow&&) noexcept = default;
    ThreadWindow& operator=(ThreadWindow&&) = delete;
    ~ThreadWindow();

    // The process's table of interfaces, looked up once with the window. Lives as long as the share.
    IGlobalInterfaceTable& interfaces() const noexcept;

    // Has `callback`, which holds `window`, invoked by the window's thread and destroyed afterwards. When the
    // thread ends before that, it is destroyed without being invoked, at the latest when the module is asked
    // whether it may be unloaded. Once for each ThreadWindow.
    static void post(ThreadWindow& window, std::unique_ptr<AsyncCallback> callback) noexcept;

    // Destroys this thread's window when nothing is under way for it, asks the windows of other threads to go
    // likewise, and frees what was left behind by threads that have ended. For when the module is asked
    // whether it may be unloaded.
    static void releaseIdle() noexcept;

private:
    ThreadWindow(std::shared_ptr<detail::WindowRecord> record, detail::CallbackQueue place) noexcept;

    std::shared_ptr<detail::WindowRecord> record_;
    // The place in the window's queue, allocated beforehand: posting must not run out of memory.
    detail::CallbackQueue place_;
};

}  // namespace Corvane::Com
