// What every CryptoAPI call that asks for an encoding is given.
#pragma once

#include <windows.h>

#include <wincrypt.h>

namespace Corvane {

inline constexpr DWORD messageEncoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;

}  // namespace Corvane
