// Import of a key with its certificate from a PFX file. On Windows PFXImportCertStore does all of it; under
// Wine it puts the key into a provider that has no SHA-256 and ties the key to every certificate of the file.
#pragma once

#include "crypto/certificate.h"

#include <span>

namespace Corvane::Test {

// Of its DER encoding. Throws CryptoException E_CERT_INVALID.
Certificate certificateOf(std::span<const BYTE> der);

// Puts the RSA key of a PFX into a container of "Microsoft Enhanced RSA and AES Cryptographic Provider" that
// is named after the certificate's thumbprint (one of that name is replaced), and returns the certificate
// tied to it. Throws CryptoException.
Certificate importPfx(const Bytes& pfx, const std::wstring& password);

}  // namespace Corvane::Test
