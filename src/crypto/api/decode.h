// Decoding of extension values by the system.
#pragma once

#include "binary/bytes.h"

#include <windows.h>

#include <wincrypt.h>

namespace Corvane::detail {

// The structure that belongs to `structType` (CryptDecodeObject), whose pointers point into the returned
// bytes. Throws CryptoException E_CERT_EXT_DECODE.
Bytes cryptDecodeObject(const char* structType, const CRYPT_DATA_BLOB& encoded);

}  // namespace Corvane::detail
