// The system's dialogs about certificates. Both return when the user has closed them.
#pragma once

#include "crypto/certificate/certificate.h"
#include "crypto/certificate/certificate_store.h"

namespace Corvane::Crypto {

// Shows the certificate viewer. Closing it in any way is success. Throws CryptoException E_CRYPTO.
void viewCertificate(const Certificate& certificate);

// Lets the user pick a certificate of an open store; null when the dialog was cancelled.
SharedCertificate selectCertificateFromStore(const CertificateStore& store);

// The same over a system store that is opened for it; throws as CertificateStore::open() does.
SharedCertificate selectCertificateFromStore(const std::wstring& storeName, unsigned storeLocation);

}  // namespace Corvane::Crypto
