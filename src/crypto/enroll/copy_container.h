// Copies of private keys.
#pragma once

#include "crypto/certificate/certificate.h"

#include <string>

namespace Corvane {

// Copies the private key of the certificate into a new container of that name, of the same provider; it can
// be exported from there as well. GOST keys travel encrypted under a key that both containers agree on,
// others in memory that is wiped.
//
// Throws CryptoException E_CERT_PROPERTY where the certificate has no key; E_CRYPTO_PROVIDER where a
// container cannot be opened or the new one exists already; E_CRYPTO_GET_USER_KEY; E_CRYPTO_PROVIDER_PARAM;
// E_CRYPTO_KEY_PARAM; E_CRYPTO_EXPORT_KEY, for a key that was made not to be exported; E_CRYPTO_IMPORT_KEY;
// what detail::agreeOnKey() throws. The new container is taken away then.
void copyKeyContainer(const Certificate& certificate, const std::wstring& destination);

}  // namespace Corvane
