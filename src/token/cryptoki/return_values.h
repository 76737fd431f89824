// The return values of PKCS#11 2.20 by their names.
#pragma once

#include "token/cryptoki/cryptoki.h"

#include <span>
#include <string>

namespace cryptoki {

struct ReturnValue {
    CK_RV value;
    const char* name;
    const char* description;  // empty for most
};

// All but CKR_OK, ascending.
std::span<const ReturnValue> returnValues() noexcept;

// "NAME", or "NAME (description)" where there is one. Of values that have no name the number: a vendor's own
// as "CKR_VENDOR_DEFINED + 0x5", others as "0x1b2".
std::string returnValueText(CK_RV value);

}  // namespace cryptoki
