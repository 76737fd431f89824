// Calls of the compression layer, which knows nothing of the log: how they fail is written down here, under
// the name of the function that failed.
#pragma once

#include "com/async.h"
#include "com/operation_token.h"
#include "core/errors.h"
#include "core/exception.h"
#include "core/log.h"
#include "core/progress.h"

#include <utility>

namespace Corvane::Com {

// Runs `work`; what it throws passes on.
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

// Starts `work`(progress) on a worker, with the script's token. For use inside a frame.
template <class Work>
void startCompression(const wchar_t* name, IDispatch* callback, const VARIANT& token, Work work) {
    startAsync(callback, [name, progress = progressOf(token), work = std::move(work)] {
        return namedCall(name, [&] { return work(progress); });
    });
}

}  // namespace Corvane::Com
