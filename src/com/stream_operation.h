// Starting long operations over streams.
#pragma once

#include "com/async.h"
#include "com/base_stream.h"
#include "com/operation_token.h"
#include "core/log.h"

namespace Corvane::Com {

// Runs `work`, writes the log line of an operation that was canceled, and passes on what it throws. `name` is
// the function that computes.
template <class Work>
auto runCancelable(const wchar_t* name, Work&& work) {
    try {
        return std::forward<Work>(work)();
    } catch (const Exception& exception) {
        if (exception.code() == E_CANCELED.code) {
            writeLog(LogLevel::warning, name, L"operation was canceled");
        }
        throw;
    }
}

// Starts `work`(stream, progress) with the token of the script. For use inside a frame.
template <class Work>
void startStreamOperation(const wchar_t* name, IDispatch* callback, SharedStream stream, const VARIANT& token,
                          Work work) {
    startAsync(callback, [name, stream = std::move(stream), progress = progressOf(token), work] {
        return runCancelable(name, [&] { return work(*stream, progress); });
    });
}

}  // namespace Corvane::Com
