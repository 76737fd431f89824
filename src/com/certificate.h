// Certificate: an X.509 certificate as scripts see it.
#pragma once

#include "com/object.h"
#include "crypto/certificate.h"

#include <VetrelCorvane2_h.h>

class CCertificate final : public Corvane::Com::Object<CCertificate, Certificate, ICertificate> {
public:
    // Holds no certificate: what a class factory makes. Every member fails with E_CERT_INVALID.
    CCertificate() = default;
    explicit CCertificate(Corvane::SharedCertificate certificate) noexcept
        : certificate_(std::move(certificate)) {}

    // Never null. Throws Exception E_CERT_INVALID where the object holds none.
    const Corvane::SharedCertificate& certificate() const;

    HRESULT STDMETHODCALLTYPE get_CommonName(BSTR* name) override;
    HRESULT STDMETHODCALLTYPE get_ValidFrom(DATE* date) override;
    HRESULT STDMETHODCALLTYPE get_ValidTo(DATE* date) override;
    HRESULT STDMETHODCALLTYPE get_IssuerName(BSTR* name) override;
    HRESULT STDMETHODCALLTYPE get_HasPrivateKey(VARIANT_BOOL* has) override;
    HRESULT STDMETHODCALLTYPE get_Hash(IBinaryObject** hash) override;
    HRESULT STDMETHODCALLTYPE get_SerialNumber(IBinaryObject** number) override;
    HRESULT STDMETHODCALLTYPE get_Description(BSTR* json) override;
    HRESULT STDMETHODCALLTYPE get_Content(IBinaryObject** content) override;
    HRESULT STDMETHODCALLTYPE get_PublicKeyLength(UINT* bits) override;
    HRESULT STDMETHODCALLTYPE get_PublicKeyAlgorithm(BSTR* oid) override;
    HRESULT STDMETHODCALLTYPE Display() override;
    HRESULT STDMETHODCALLTYPE get_Subject(BSTR* name) override;
    HRESULT STDMETHODCALLTYPE Uninstall() override;
    HRESULT STDMETHODCALLTYPE get_Archived(VARIANT_BOOL* archived) override;
    HRESULT STDMETHODCALLTYPE put_Archived(VARIANT_BOOL archived) override;
    HRESULT STDMETHODCALLTYPE GetExtensions(BSTR* json) override;
    HRESULT STDMETHODCALLTYPE get_Issuer(BSTR* name) override;
    HRESULT STDMETHODCALLTYPE get_Version(LONG* version) override;
    HRESULT STDMETHODCALLTYPE GetRdnValue(BSTR oid, VARIANT_BOOL forIssuer, BSTR* value) override;
    HRESULT STDMETHODCALLTYPE GetContainerInfo(BSTR* json) override;
    HRESULT STDMETHODCALLTYPE GetOnlineCertificateStatusProtocol(BSTR* address) override;

private:
    Corvane::SharedCertificate certificate_;
};

namespace Corvane::Com {

// The certificate behind an ICertificate argument, never null. Fails as resolve() does, and with
// E_CERT_INVALID for an object that holds none.
SharedCertificate certificateOf(ICertificate* object);

// A new Certificate that shares the certificate, which must not be null.
ComPtr<CCertificate> makeCertificate(SharedCertificate certificate);

}  // namespace Corvane::Com
