// Renewal on Windows XP and Server 2003.
#pragma once

#include "com/enroll/certificate_request.h"

namespace Corvane {

// Asks again for the key of the old certificate, with its subject and its extensions but those that belong to
// the issuer. Beside the control's failures: CryptoException E_WRONG_CERTIFICATE_CONTENT where the subject
// cannot be read, E_NO_MATCHING_KEY where the certificate has no key or another one than its container,
// E_ACQUIRE_CRYPTO_PROVIDER where that cannot be opened.
class Enroll4CertificateRequest final : public ICertificateRequest {
public:
    std::wstring getRenewalRequest(bool isPkcs7, const Certificate& certificate) const override;
};

}  // namespace Corvane
