// The frame that every script-visible method runs in: the only place where what internal code throws
// becomes an HRESULT and error information.
#pragma once

#include "core/errors.h"

#include <windows.h>

#include <utility>

namespace Corvane::Com {

// Ends a method with an HRESULT and no error information and no log line: an argument that is not one
// of our objects, or a null output pointer. Thrown inside a frame only.
struct SilentFailure {
    HRESULT hr;
};

// Sets the thread's error information (source: the ProgID of `clsid`) and returns `hr`. Never throws.
HRESULT reportError(const CLSID& clsid, const wchar_t* description, HRESULT hr) noexcept;

// The same for methods that can fail in one known way only and need no ladder: the descriptor's message
// as it stands, without number, and the HRESULT of its code.
HRESULT reportError(const CLSID& clsid, const ErrorDescriptor& descriptor) noexcept;

// Translates the exception being handled. `method` is the qualified name of the method, for the log.
HRESULT reportCurrentException(const CLSID& clsid, const wchar_t* method) noexcept;

// Runs `body` and returns S_OK, or what its exception translates to. Output parameters are to be set
// as the last thing `body` does.
template <class Body>
HRESULT frame(const CLSID& clsid, const wchar_t* method, Body&& body) noexcept {
    try {
        std::forward<Body>(body)();
        return S_OK;
    } catch (...) {
        return reportCurrentException(clsid, method);
    }
}

}  // namespace Corvane::Com
