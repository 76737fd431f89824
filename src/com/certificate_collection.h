// CertificateCollection: an ordered list of certificates that scripts index and enumerate.
#pragma once

#include "com/object.h"
#include "core/lock.h"
#include "crypto/certificate.h"

#include <VetrelCorvane2_h.h>

class CCertificateCollection final
    : public Corvane::Com::Object<CCertificateCollection, CertificateCollection, ICertificateCollection> {
public:
    CCertificateCollection() = default;
    explicit CCertificateCollection(Corvane::Certificates certificates) noexcept
        : certificates_(std::move(certificates)) {}

    // The list as it stands now. Any thread.
    Corvane::Certificates certificates() const;

    HRESULT STDMETHODCALLTYPE get_count(ULONG* count) override;
    HRESULT STDMETHODCALLTYPE get_Item(ULONG index, ICertificate** certificate) override;
    HRESULT STDMETHODCALLTYPE Add(ICertificate* certificate) override;
    HRESULT STDMETHODCALLTYPE Remove(ULONG index) override;
    HRESULT STDMETHODCALLTYPE Clear() override;
    // NOLINTNEXTLINE(bugprone-reserved-identifier): automation's name for the enumerator
    HRESULT STDMETHODCALLTYPE get__NewEnum(IUnknown** enumerator) override;

private:
    mutable Corvane::SharedMutex mutex_;  // guards the list
    Corvane::Certificates certificates_;
};

namespace Corvane::Com {

// A new CertificateCollection of the certificates.
ComPtr<CCertificateCollection> makeCollection(Certificates certificates);

}  // namespace Corvane::Com
