// An issued certificate meets the key that it was asked for with.
#pragma once

#include "crypto/certificate/certificate.h"
#include "crypto/provider/provider_record.h"

#include <string>
#include <string_view>

namespace Corvane {

// Looks through the provider's containers for the one whose exchange key is the certificate's, the first in
// the provider's order where there are several, writes it into the certificate's properties and installs the
// certificate in the user's store of that name. Returns it as it stands there. A container that cannot be
// opened, or has no exchange key, does not match. `response` is as detail::queryCertificate() takes it.
//
// Throws CryptoException E_CRYPTO_QUERY_OBJECT; E_CRYPTO_PROVIDER; E_CRYPTO_PROVIDER_PARAM;
// E_CRYPTO_EXPORT_PUBLIC_KEY_INFO; E_CRYPTO_BIND_CERTIFICATE_PRIVATE_KEY, which as an Exception says that no
// container matches; E_CERT_STORE_OPEN and E_CERT_STORE_INSTALL. Nothing is installed then.
SharedCertificate installCertificateResponse(const ProviderRecord& record, std::wstring_view response,
                                             const std::wstring& storeName);

// The same with the container that is named. Throws Exception E_CRYPTO_WRONG_CONTAINER where its exchange key
// is not the certificate's.
SharedCertificate installCertificateResponseEx(const ProviderRecord& record, std::wstring_view response,
                                               const std::wstring& containerPath,
                                               const std::wstring& storeName);

}  // namespace Corvane
