// Requests to renew a certificate, by the objects that the system has for enrollment. The calling thread
// belongs to an apartment.
#pragma once

#include "crypto/certificate/certificate.h"

#include <memory>
#include <string>

namespace Corvane {

// The provider of the new key, whichever issued the old certificate.
inline constexpr wchar_t renewalProvider[] = L"Crypto-Pro GOST R 34.10-2001 Cryptographic Service Provider";
inline constexpr long renewalProviderType = 75;

class ICertificateRequest {
public:
    ICertificateRequest() = default;
    ICertificateRequest(const ICertificateRequest&) = delete;
    ICertificateRequest& operator=(const ICertificateRequest&) = delete;
    virtual ~ICertificateRequest() = default;

    // The request in Base64: PKCS #10, or a message signed with the old certificate around one. A failed call
    // of the system's objects is a ComException with the descriptor of the step (E_INITIALIZE_PKCS10 and the
    // like).
    virtual std::wstring getRenewalRequest(bool isPkcs7, const Certificate& certificate) const = 0;
};

// By the major version of Windows: 5 has the enrollment control, later ones have the enrollment objects.
// Throws Exception E_CENROLL_UNSUPORTED for earlier ones.
std::unique_ptr<ICertificateRequest> createCertificateRequest(unsigned majorVersion);

// On this Windows. Throws what createCertificateRequest() and getRenewalRequest() do.
std::wstring getCertificateRenewalRequest(bool isPkcs7, const Certificate& certificate);

}  // namespace Corvane
