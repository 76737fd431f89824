// The signers of a message that was decoded once, whose signatures are verified one after the other.
#pragma once

#include "crypto/message/crypt_message.h"
#include "crypto/message/signer_lookup.h"

namespace Corvane::detail {

// More signers than any document has. A message that claims more is not judged, since the work for each is
// the verifier's and the claim costs its author nothing.
inline constexpr DWORD signerLimit = 1000;

// The message must have been updated to its end, and its content too, and outlives this.
class DecodedSignatures {
public:
    // Throws CryptoException E_CRYPTO_VERIFY with CRYPT_E_UNEXPECTED_MSG_TYPE for another message than a
    // signed one and with ERROR_INVALID_DATA beyond signerLimit; E_CRYPTO_MESSAGE_PARAM; E_CERT_STORE_OPEN.
    explicit DecodedSignatures(CryptMessage& message);

    DWORD count() const noexcept { return count_; }
    HCERTSTORE store() const noexcept { return store_.get(); }

    // Issuer and serial number (CERT_INFO), pointing into the bytes.
    Bytes signerInfo(DWORD index) const;
    CertificateContext findCertificate(const SignerLookup& lookup, DWORD index) const;
    // 0, or why the signature is not good for that certificate's key.
    DWORD verify(DWORD index, PCCERT_CONTEXT certificate);

    // The certificates of all signers, each of whose signatures is good. Throws CryptoException
    // E_CRYPTO_VERIFY at the first that is not, or has no certificate.
    Certificates verifyAll(const SignerLookup& lookup);

private:
    CryptMessage& message_;
    CertificateStoreHandle store_;
    DWORD count_ = 0;
};

// The certificates that a decoded message carries, signers' and others. Throws CryptoException
// E_CRYPTO_EXTRACT_CERT.
Certificates certificatesIn(const CryptMessage& message);

}  // namespace Corvane::detail
