// Work that writes down how it ends: the layers that do it know nothing of the log.
#pragma once

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
    } catch (const std::exception& exception) {
        writeLog(LogLevel::error, name, exception.what());
        throw;
    }
}

// `work` for another thread, to be run as above.
template <class Work>
auto named(const wchar_t* name, Work work) {
    return [name, work = std::move(work)]() mutable { return namedCall(name, work); };
}

}  // namespace Corvane::Com
