// Renewal on Windows Vista and later.
#pragma once

#include "com/enroll/certificate_request.h"

namespace Corvane {

// Makes a new key like the old one, for exchange, and inherits the subject and the extensions, without those
// that belong to the issuer.
class X509CertificateRequest final : public ICertificateRequest {
public:
    std::wstring getRenewalRequest(bool isPkcs7, const Certificate& certificate) const override;
};

}  // namespace Corvane
