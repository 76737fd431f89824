// What the checkers of all families of calls have in common, those of vendors' modules included.
#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace Corvane {

// A family of calls that report alike offers
//   - succeeded(result): whether the call did its work;
//   - fail(result, about...): logs and throws the family's exception; `about` is what it needs to know
//   besides.
//
// Returns the result of a call that succeeded. Nothing may come between the call and this, since a family may
// report through the thread's last error.
template <class Family, class Result, class... About>
Result check(Result result, const About&... about) {
    if (!Family::succeeded(result))
        Family::fail(result, about...);
    return result;
}

// Calls that are made twice: once to learn how much room the answer needs, once to fill it. `call`(buffer,
// &size) is made with a null buffer and then with room for `size` elements. Returns exactly what the second
// call delivered, and never more than there was room for, whatever size a vendor's module names by then; the
// failure of either is the family's.
//
//     twoPass<CryptoCalls, BYTE, DWORD>(call, E_CRYPTO_SIGN, L"CryptSignMessage");
template <class Family, class T, class Size, class Call, class... About>
std::vector<T> twoPass(Call call, const About&... about) {
    Size size = 0;
    check<Family>(call(static_cast<T*>(nullptr), &size), about...);
    std::vector<T> buffer(static_cast<std::size_t>(size));
    check<Family>(call(buffer.data(), &size), about...);
    buffer.resize(std::min(static_cast<std::size_t>(size), buffer.size()));
    return buffer;
}

}  // namespace Corvane
