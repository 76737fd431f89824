// How calls of a PKCS#11 module fail.
#pragma once

#include "core/checker.h"
#include "token/cryptoki/cryptoki.h"

#include <stdexcept>

namespace cryptoki {

// What a call of a module returned. The text is the call's name and the value's: "C_Login:
// CKR_PIN_INCORRECT".
class CryptokiException : public std::runtime_error {
public:
    // `call` must live as long as the process.
    CryptokiException(CK_RV value, const char* call);

    CK_RV value() const noexcept { return value_; }
    const char* call() const noexcept { return call_; }

private:
    CK_RV value_;
    const char* call_;
};

// The family of these calls for the checkers of core/checker.h.
struct CryptokiCalls {
    static bool succeeded(CK_RV value) noexcept { return value == CKR_OK; }
    [[noreturn]] static void fail(CK_RV value, const char* call);
};

// For a call that returns nothing but its value.
inline void checkCryptoki(CK_RV value, const char* call) {
    Corvane::check<CryptokiCalls>(value, call);
}

}  // namespace cryptoki
