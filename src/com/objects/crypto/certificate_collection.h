// CertificateCollection: an ordered list of certificates that scripts index and enumerate.
#pragma once

#include "com/async/async.h"
#include "com/runtime/object.h"
#include "core/lock.h"
#include "crypto/certificate/certificate.h"

#include <VetrelCorvane2_h.h>

class CCertificateCollection final
    : public Corvane::Com::Object<CCertificateCollection, CertificateCollection, ICertificateCollection> {
public:
    CCertificateCollection() = default;
    explicit CCertificateCollection(Corvane::Certificates certificates) noexcept
        : certificates_(std::move(certificates)) {}

    // The list as it stands now. Any thread.
    Corvane::Certificates certificates() const;

#include <methods/ICertificateCollection.h>

private:
    mutable Corvane::SharedMutex mutex_;  // guards the list
    Corvane::Certificates certificates_;
};

namespace Corvane::Com {

// A new CertificateCollection of the certificates.
ComPtr<CCertificateCollection> makeCollection(Certificates certificates);

template <>
struct ScriptResult<Certificates> {
    static ComPtr<CCertificateCollection> make(Certificates certificates) {
        return makeCollection(std::move(certificates));
    }
};

}  // namespace Corvane::Com
