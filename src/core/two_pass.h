// CryptoAPI calls that are made twice, see twoPass of core/checker.h.
#pragma once

#include "core/check.h"

#include <vector>

namespace Corvane {

// `call`(buffer, &size) returns false on failure with the thread's last error set. Failure of either call
// throws CryptoException with `descriptor`; `name` is the call for the log.
template <class T, class Call>
std::vector<T> twoPass(const ErrorDescriptor& descriptor, const wchar_t* name, Call call) {
    return twoPass<CryptoCalls, T, DWORD>(std::move(call), descriptor, name);
}

}  // namespace Corvane
