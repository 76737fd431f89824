// OBJECT IDENTIFIER values from dotted text. Pure, any thread.
#pragma once

#include "asn1/base/values.h"

#include <string_view>

namespace asn1 {

// The contents octets (X.690 8.19). Numbers may be of any size, within maxOidSize octets altogether, and are
// written without leading zeros. Throws Asn1Exception for any other text.
Bytes oidContents(std::string_view dotted);

// Whether oidContents() would take it.
bool isOid(std::string_view dotted);

}  // namespace asn1
