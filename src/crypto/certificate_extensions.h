// A certificate's extensions as scripts see them.
#pragma once

#include "crypto/certificate.h"

#include <string>

namespace Corvane::Crypto {

// A JSON object of three arrays of strings: "keyUsages" (names), "extendedKeyUsages" and "policies" (dotted
// object identifiers). An extension that is absent gives an empty array. Throws asn1::Asn1Exception.
std::wstring getCertExtensionJson(const Certificate& certificate);

}  // namespace Corvane::Crypto
