// Operations: what a method does, written once, and either run within the method or started on another
// thread.
#pragma once

#include "com/async/async_callback.h"
#include "com/runtime/arguments.h"
#include "com/runtime/automation.h"

#include <windows.h>

#include <functional>
#include <string>
#include <type_traits>

namespace Corvane::Com {

// What a method does, as a closure over plain values: its arguments are resolved where it is made, any thread
// may call it, and it is called once. `name` is the function that does the work.
template <class Work>
struct Operation {
    const wchar_t* name;
    Work work;
};
template <class Work>
Operation(const wchar_t*, Work) -> Operation<Work>;

// What the result of an operation is to a script: the value itself or, where it is specialised, beside the
// object that it becomes, a new object. It is called on the thread that did the work.
template <class Result>
struct ScriptResult {
    static Result make(Result value) { return value; }
};

namespace detail {

// Runs `work` on a thread of the system's pool. Throws Win32Exception E_ACTIVEX when there is none; then
// `work` has not run.
void runOnWorker(std::function<void()> work);

// The one line in the log about the failure of a started operation, or about its being canceled.
void logFailure(const wchar_t* name, const std::exception_ptr& error) noexcept;

void store(VARIANT& out, std::uint32_t number) noexcept;
void store(VARIANT& out, LONG number) noexcept;
// Throws std::bad_alloc.
void store(VARIANT& out, const std::wstring& text);

template <class T>
void store(VARIANT& out, ComPtr<T> object) noexcept {
    V_DISPATCH(&out) = object.detach();
    V_VT(&out) = VT_DISPATCH;
}

template <class Work>
void finish(std::unique_ptr<AsyncCallback> callback, Operation<Work> operation) noexcept {
    using Result = std::invoke_result_t<Work&>;
    using Held = std::conditional_t<std::is_void_v<Result>, void*, Result>;
    Held result{};
    std::exception_ptr error;
    try {
        // What it holds is let go of before the callback.
        Work work = std::move(operation.work);
        if constexpr (std::is_void_v<Result>)
            work();
        else
            result = work();
    } catch (...) {
        error = std::current_exception();
        logFailure(operation.name, error);
    }
    if constexpr (std::is_void_v<Result>) {
        AsyncCallback::pluginThreadCall<void*>(std::move(callback), error, result, nullptr);
    } else {
        // Moved rather than copied: it may be as large as memory.
        AsyncCallback::pluginThreadCall<Result>(
            std::move(callback), error, result, [&result](const Result&, VARIANT* out) {
                store(*out, ScriptResult<Result>::make(std::move(result)));
                return S_OK;
            });
    }
}

}  // namespace detail

// Runs an operation and hands its result to the caller. For use inside a frame, as the last thing.
template <class Out, class Work>
void run(Out* out, const Operation<Work>& operation) {
    give(out, ScriptResult<std::invoke_result_t<const Work&>>::make(operation.work()));
}

template <class Work>
void run(const Operation<Work>& operation) {
    operation.work();
}

// Starts an operation on a worker thread and returns at once; later `callback`(result, error) is called on
// this thread. For use inside a frame: a failure to start is thrown, and there is no callback.
template <class Work>
void start(IDispatch* callback, Operation<Work> operation) {
    // std::function copies what it holds, so the callback travels in a shared box.
    auto box = std::make_shared<std::unique_ptr<AsyncCallback>>(AsyncCallback::create(callback));
    detail::runOnWorker([box, operation = std::move(operation)]() mutable {
        detail::finish(std::move(*box), std::move(operation));
    });
}

}  // namespace Corvane::Com
