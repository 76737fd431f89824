// Where the certificate of a message's signer is looked for: among those that the caller supplied, then in
// the message.
#pragma once

#include "core/handles.h"
#include "crypto/certificate/certificate.h"

#include <windows.h>

#include <wincrypt.h>

namespace Corvane::detail {

// Any thread, once it is made.
class SignerLookup {
public:
    // Throws CryptoException E_CERT_STORE_OPEN, E_CERT_STORE_INSTALL.
    explicit SignerLookup(const Certificates& supplied);

    // `signer` tells issuer and serial number, or a key identifier in the form in which the system puts it
    // there. Empty, with the thread's last error set, where there is no such certificate, and for a null
    // signer. Never throws.
    CertificateContext find(CERT_INFO* signer, HCERTSTORE messageStore) const noexcept;

    // For CRYPT_VERIFY_MESSAGE_PARA, with the object itself as its argument.
    static PCCERT_CONTEXT WINAPI getSignerCertificateCallback(void* lookup, DWORD encoding, PCERT_INFO signer,
                                                              HCERTSTORE messageStore);

private:
    CertificateStoreHandle supplied_;  // empty where none are
};

}  // namespace Corvane::detail
