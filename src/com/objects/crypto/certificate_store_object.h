// CertificateStore: one of the system's certificate stores.
#pragma once

#include "com/access/service_object.h"
#include "core/lock.h"
#include "crypto/certificate/certificate_store.h"

#include <VetrelCorvane2_h.h>

class CCertificateStore final
    : public Corvane::Com::ServiceObject<CCertificateStore, CertificateStore, ICertificateStore> {
public:
#include <methods/ICertificateStore.h>

private:
    // The open store, kept by the caller while it works with it. Throws Exception E_CERT_STORE_NOT_OPENED.
    Corvane::SharedStore store() const;
    Corvane::SharedStore replace(Corvane::SharedStore store);

    mutable Corvane::SharedMutex mutex_;  // guards the pointer
    Corvane::SharedStore store_;
};
