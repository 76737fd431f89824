// An authority's answer as scripts have it.
#pragma once

#include "crypto/certificate/certificate.h"

#include <string_view>

namespace Corvane::detail {

// The one certificate in a text: Base64, with or without the lines of PEM, or hexadecimal digits of either
// case, both with line breaks anywhere; or DER, each character up to 0xFF a byte. Throws CryptoException
// E_CRYPTO_QUERY_OBJECT for anything else, a list of certificates (PKCS #7) too.
Certificate queryCertificate(std::wstring_view response);

}  // namespace Corvane::detail
