// Import of a key with its certificate from a PFX file. On Windows PFXImportCertStore does all of it; under
// Wine it puts the key into a provider that has no SHA-256 and ties the key to every certificate of the file.
#pragma once

#include "core/handles.h"

#include <span>
#include <string>

namespace Corvane::Test {

// Puts the RSA key of a PFX into a container of "Microsoft Enhanced RSA and AES Cryptographic Provider" that
// is named after the certificate's thumbprint (one of that name is replaced), and returns the certificate
// tied to it. Throws CryptoException, and Exception E_GET_PRIVATE_KEY where no certificate has a key.
CertificateContext importPfx(std::span<const BYTE> pfx, const std::wstring& password);

// SHA-1 thumbprint in hexadecimal.
std::wstring thumbprint(PCCERT_CONTEXT certificate);

}  // namespace Corvane::Test
