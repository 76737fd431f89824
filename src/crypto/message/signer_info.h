// What a new signer brings into a message.
#pragma once

#include "crypto/certificate/certificate.h"
#include "crypto/message/private_key.h"
#include "crypto/provider/provider_record.h"

#include <windows.h>

#include <wincrypt.h>

#include <string>
#include <vector>

namespace Corvane::detail {

// The certificates that go into a message beside a signature: the signer's own or, with `addCertChain`, every
// one of its chain.
class IncludedCertificates {
public:
    // Throws CryptoException E_CERT_GET_CHAIN.
    IncludedCertificates(const Certificate& signer, bool addCertChain);

    const Certificates& certificates() const noexcept { return certificates_; }
    // As the two families of message functions want them; valid as long as this object.
    std::vector<PCCERT_CONTEXT> contexts() const;
    std::vector<CRYPT_DATA_BLOB> blobs() const;

private:
    Certificates certificates_;
};

// The structure of a signer for CryptMsg..., without attributes, with the hash of the provider's record. It
// is valid as long as this object, the certificate and the key.
class SignerInfo {
public:
    SignerInfo(const ProviderRecord& record, const Certificate& certificate, const PrivateKey& key);
    SignerInfo(const SignerInfo&) = delete;
    SignerInfo& operator=(const SignerInfo&) = delete;
    ~SignerInfo() = default;

    CMSG_SIGNER_ENCODE_INFO* get() noexcept { return &info_; }

private:
    std::string hash_;
    CMSG_SIGNER_ENCODE_INFO info_{};
};

}  // namespace Corvane::detail
