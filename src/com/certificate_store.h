// CertificateStore: one of the system's certificate stores.
#pragma once

#include "com/service_object.h"
#include "core/lock.h"
#include "crypto/certificate_store.h"

#include <VetrelCorvane2_h.h>

class CCertificateStore final
    : public Corvane::Com::ServiceObject<CCertificateStore, CertificateStore, ICertificateStore> {
public:
    HRESULT STDMETHODCALLTYPE Open(ULONG location, BSTR name, ULONG openMode) override;
    HRESULT STDMETHODCALLTYPE Close() override;
    HRESULT STDMETHODCALLTYPE get_name(BSTR* name) override;
    HRESULT STDMETHODCALLTYPE get_location(ULONG* location) override;
    HRESULT STDMETHODCALLTYPE GetCertificates(BSTR filter, ICertificateCollection** certificates) override;
    HRESULT STDMETHODCALLTYPE SelectCertificate(ICertificate** certificate) override;
    HRESULT STDMETHODCALLTYPE Install(ICertificate* certificate, ICertificate** installed) override;

private:
    // The open store, kept by the caller while it works with it. Throws Exception E_CERT_STORE_NOT_OPENED.
    Corvane::SharedStore store() const;
    Corvane::SharedStore replace(Corvane::SharedStore store);

    mutable Corvane::SharedMutex mutex_;  // guards the pointer
    Corvane::SharedStore store_;
};
