// Starting long operations that can be followed and canceled, and writing down how they end: the layers that
// do the work know nothing of the log.
#pragma once

#include "com/async.h"
#include "com/base_stream.h"
#include "com/operation_token.h"
#include "core/errors.h"
#include "core/exception.h"
#include "core/log.h"

#include <utility>

namespace Corvane::Com {

// Runs `work`, the function of that name. When it fails, or is canceled, that is one line in the log; what it
// throws passes on.
template <class Work>
decltype(auto) namedCall(const wchar_t* name, Work&& work) {
    try {
        return std::forward<Work>(work)();
    } catch (const Exception& exception) {
        if (exception.code() == E_CANCELED.code) {
            writeLog(LogLevel::warning, name, L"operation was canceled");
        } else {
            writeLog(LogLevel::error, name, fullMessage(exception));
        }
        throw;
    }
}

// Starts `work`(progress) on a worker, with the token of the script. For use inside a frame.
template <class Work>
void startOperation(const wchar_t* name, IDispatch* callback, const VARIANT& token, Work work) {
    startAsync(callback, [name, progress = progressOf(token), work = std::move(work)] {
        return namedCall(name, [&] { return work(progress); });
    });
}

// The same for `work`(stream, progress).
template <class Work>
void startStreamOperation(const wchar_t* name, IDispatch* callback, SharedStream stream, const VARIANT& token,
                          Work work) {
    startOperation(name, callback, token,
                   [stream = std::move(stream), work = std::move(work)](const SharedProgress& progress) {
                       return work(*stream, progress);
                   });
}

}  // namespace Corvane::Com
