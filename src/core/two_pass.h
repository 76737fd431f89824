// System calls that are made twice: once to learn how much room the answer needs, once to fill it.
#pragma once

#include "core/check.h"

#include <vector>

namespace Corvane {

// `call(buffer, &size)` is made with a null buffer and then with room for `size` elements, and returns
// false on failure with the thread's last error set. Returns exactly what the second call delivered.
// Failure of either call throws CryptoException with `descriptor`; `name` is the call for the log.
template <class T, class Call>
std::vector<T> twoPass(const ErrorDescriptor& descriptor, const wchar_t* name, Call call) {
    DWORD size = 0;
    checkCrypto(call(static_cast<T*>(nullptr), &size), descriptor, name);
    std::vector<T> buffer(size);
    checkCrypto(call(buffer.data(), &size), descriptor, name);
    buffer.resize(size);
    return buffer;
}

}  // namespace Corvane
