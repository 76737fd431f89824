// CryptoService: search for certificates, signing, verification.
#pragma once

#include "com/service_object.h"

#include <VetrelCorvane2_h.h>

class CCryptoService final
    : public Corvane::Com::ServiceObject<CCryptoService, CryptoService, ICryptoService> {
public:
    HRESULT STDMETHODCALLTYPE GetCertificates(BSTR filter, ICertificateCollection** certificates) override;
    HRESULT STDMETHODCALLTYPE FindCertificate(BSTR query, ICertificate** certificate) override;
    HRESULT STDMETHODCALLTYPE CreateCertificateFromContent(IBinaryObject* content,
                                                           ICertificate** certificate) override;
    HRESULT STDMETHODCALLTYPE Sign(IBinaryObject* pData, ICertificate* pCertificate,
                                   VARIANT_BOOL addCertChain, IBinaryObject** signature) override;
    HRESULT STDMETHODCALLTYPE AttachedSign(IBinaryObject* pData, ICertificate* pCertificate,
                                           VARIANT_BOOL addCertChain, IBinaryObject** signature) override;
    HRESULT STDMETHODCALLTYPE VerifySignature(IBinaryObject* pData, IBinaryObject* signature,
                                              VARIANT certificates,
                                              ICertificateCollection** signers) override;
    HRESULT STDMETHODCALLTYPE VerifyAttachedSignature(IBinaryObject* pSignature, VARIANT certificates,
                                                      ICertificateCollection** signers) override;
};
