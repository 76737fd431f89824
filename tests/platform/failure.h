// How what a stand-in throws becomes the last error of its functions.
#pragma once

#include "ber/ber.h"

#include <windows.h>

#include <wincrypt.h>

#include <new>

namespace Corvane::Platform {

// A code of GetLastError.
struct Failure {
    DWORD code;
};

[[noreturn]] inline void fail(LONG code) {
    throw Failure{static_cast<DWORD>(code)};
}

// For calls of the system.
template <class Result>
Result must(Result result) {
    if (!result)
        throw Failure{::GetLastError()};
    return result;
}

// What an interface calls that which is thrown besides.
struct Codes {
    LONG truncated, malformed, memory, other;
};

template <Codes codes, class Body>
bool succeedsWith(Body&& body) noexcept {
    LONG code = codes.other;
    try {
        body();
        return true;
    } catch (const Failure& failure) {
        code = static_cast<LONG>(failure.code);
    } catch (const Truncated&) {
        code = codes.truncated;
    } catch (const BerError&) {
        code = codes.malformed;
    } catch (const std::bad_alloc&) {
        code = codes.memory;
    } catch (...) {
        code = codes.other;
    }
    ::SetLastError(static_cast<DWORD>(code));
    return false;
}

inline View viewOf(const CRYPT_DATA_BLOB& blob) {
    return {blob.pbData, blob.cbData};
}
inline View viewOf(const CRYPT_BIT_BLOB& blob) {
    return {blob.pbData, blob.cbData};
}

}  // namespace Corvane::Platform
