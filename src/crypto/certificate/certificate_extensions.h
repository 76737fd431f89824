// A certificate's extensions as scripts see them.
#pragma once

#include "crypto/certificate/certificate.h"

#include <string>

namespace Corvane::Crypto {

// A JSON object of three arrays of strings: "keyUsages" (names), "extendedKeyUsages" and "policies" (dotted
// object identifiers). An extension that is absent gives an empty array, and so does one that cannot be read,
// which leaves a line in the log. Throws Exception E_CERT_EXT_DECODE where the certificate around them cannot
// be read.
std::wstring getCertExtensionJson(const Certificate& certificate);

}  // namespace Corvane::Crypto
