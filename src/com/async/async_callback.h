// The way back of an asynchronous operation: from the worker thread to the script function that was passed
// in, on the script's own thread.
#pragma once

#include "com/async/thread_window.h"
#include "com/runtime/automation.h"
#include "com/runtime/module.h"
#include "com/runtime/ptr.h"

#include <windows.h>

#include <array>
#include <exception>
#include <functional>
#include <memory>
#include <string>

// One per started operation. Lives from the method call until the script function has been called; it keeps
// the module. Destroyed on the script's thread, or by whoever finds that this thread has ended.
class AsyncCallback {
public:
    // Registers `callback` for being called later. Called on the script's thread. Throws ComException
    // E_ACTIVEX with the HRESULT of the registration; Win32Exception E_REGISTER_WINDOW_CLASS,
    // E_CREATE_WINDOW.
    static std::unique_ptr<AsyncCallback> create(IDispatch* callback);

    AsyncCallback(const AsyncCallback&) = delete;
    AsyncCallback& operator=(const AsyncCallback&) = delete;
    ~AsyncCallback();

    // Ends the operation: takes its outcome over and posts it to the script's thread. Called once, on the
    // worker thread. `converter` may be empty when there is no result.
    template <class T>
    static void pluginThreadCall(std::unique_ptr<AsyncCallback> self, const std::exception_ptr& error,
                                 const T& result,
                                 const std::function<HRESULT(const T&, VARIANT*)>& converter) noexcept {
        logStep(L"invoke callback async operation");
        self->error_ = error;
        if (!error && converter)
            self->convert([&](VARIANT* out) { return converter(result, out); });
        post(std::move(self));
    }

    // Calls the script function as callback(result, error). On the script's thread.
    void invoke() noexcept;

private:
    AsyncCallback(Corvane::Com::ThreadWindow window, IDispatch* callback);

    void convert(const std::function<HRESULT(VARIANT*)>& converter) noexcept;
    static void post(std::unique_ptr<AsyncCallback> self) noexcept;
    static void logStep(const wchar_t* step) noexcept;
    void call(IDispatch& callback);
    void describeError() noexcept;

    Corvane::Com::ModuleReference module_;
    Corvane::Com::ThreadWindow window_;
    // In the order in which a call passes them: `this`, the error text, the result.
    std::array<Corvane::Com::Variant, 3> arguments_;
    std::exception_ptr error_;
    DWORD cookie_ = 0;
};
