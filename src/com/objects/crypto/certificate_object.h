// Certificate: an X.509 certificate as scripts see it.
#pragma once

#include "com/async/async.h"
#include "com/runtime/object.h"
#include "crypto/certificate/certificate.h"

#include <VetrelCorvane2_h.h>

class CCertificate final : public Corvane::Com::Object<CCertificate, Certificate, ICertificate> {
public:
    // Holds no certificate: what a class factory makes. Every member fails with E_CERT_INVALID.
    CCertificate() = default;
    explicit CCertificate(Corvane::SharedCertificate certificate) noexcept
        : certificate_(std::move(certificate)) {}

    // Never null. Throws Exception E_CERT_INVALID where the object holds none.
    const Corvane::SharedCertificate& certificate() const;

#include <methods/ICertificate.h>

private:
    Corvane::SharedCertificate certificate_;
};

namespace Corvane::Com {

// The certificate behind an ICertificate argument, never null. Fails as resolve() does, and with
// E_CERT_INVALID for an object that holds none.
SharedCertificate certificateOf(ICertificate* object);

// A new Certificate that shares the certificate, which must not be null.
ComPtr<CCertificate> makeCertificate(SharedCertificate certificate);

template <>
struct ScriptResult<SharedCertificate> {
    static ComPtr<CCertificate> make(SharedCertificate certificate) {
        return makeCertificate(std::move(certificate));
    }
};

}  // namespace Corvane::Com
