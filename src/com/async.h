// Starting asynchronous operations: the one way from a method to a worker thread.
#pragma once

#include "binary/bytes.h"
#include "com/async_callback.h"
#include "com/automation.h"

#include <windows.h>

#include <functional>
#include <type_traits>

namespace Corvane::Com {

namespace detail {

// Runs `work` on a thread of the system's pool. Throws Win32Exception E_ACTIVEX when there is none; then
// `work` has not run.
void runOnWorker(std::function<void()> work);

}  // namespace detail

// The results of operations as a script gets them. A conversion may create objects: it runs on the worker.
HRESULT toVariant(std::uint32_t number, VARIANT* out);
HRESULT toVariant(const SharedBytes& bytes, VARIANT* out);  // as a BinaryObject
HRESULT toVariant(Bytes bytes, VARIANT* out);               // likewise

// Runs `work` on a worker thread and returns at once; later `callback`(result, error) is called on this
// thread. `work` returns the result, or nothing, and may throw anything; what it holds is let go of before
// the callback. For use inside a frame: a failure to start is thrown, and there is no callback.
template <class Work>
void startAsync(IDispatch* callback, Work work) {
    using Result = std::invoke_result_t<Work&>;
    // std::function copies what it holds, so the callback travels in a shared box.
    auto box = std::make_shared<std::unique_ptr<AsyncCallback>>(AsyncCallback::create(callback));
    detail::runOnWorker([box, work = std::move(work)]() mutable {
        std::exception_ptr error;
        const auto run = [&] {
            Work once = std::move(work);
            return once();
        };
        if constexpr (std::is_void_v<Result>) {
            try {
                run();
            } catch (...) {
                error = std::current_exception();
            }
            AsyncCallback::pluginThreadCall<void*>(std::move(*box), error, nullptr, nullptr);
        } else {
            Result result{};
            try {
                result = run();
            } catch (...) {
                error = std::current_exception();
            }
            AsyncCallback::pluginThreadCall<Result>(
                std::move(*box), error, result,
                [](const Result& value, VARIANT* out) { return toVariant(value, out); });
        }
    });
}

}  // namespace Corvane::Com
