// Search for certificates over the system's stores.
#pragma once

#include "crypto/certificate/certificate.h"

#include <string_view>

namespace Corvane::Crypto {

// The certificates that the query (certificate_filter.h) asks for: of the standard stores, of one store, or
// of the stores of one name in both locations, the user's first. With `firstOnly` each store gives one at
// most. Archived ones are never among them. Throws Exception E_CERT_JSON_FILTER; a store that cannot be
// opened ends the search with CryptoException E_CERT_STORE_OPEN.
Certificates getCertificates(std::wstring_view query, bool firstOnly);

// The first of them. Throws Exception E_CERT_NOT_FOUND where there is none.
SharedCertificate findCertificate(std::wstring_view query);

}  // namespace Corvane::Crypto
