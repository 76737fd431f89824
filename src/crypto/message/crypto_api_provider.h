// Cryptographic operations by way of CryptoAPI, with the algorithms of one provider record.
#pragma once

#include "binary/bytes.h"
#include "crypto/certificate/certificate.h"
#include "crypto/provider/provider_record.h"

#include <memory>
#include <utility>

namespace Corvane {

// Has no state but its record: any thread may use it.
class CryptoApiProvider {
public:
    explicit CryptoApiProvider(ProviderRecord record) noexcept : record_(std::move(record)) {}
    virtual ~CryptoApiProvider() = default;
    CryptoApiProvider(const CryptoApiProvider&) = delete;
    CryptoApiProvider& operator=(const CryptoApiProvider&) = delete;

    // A CMS message (RFC 5652, DER) signed with the private key of the certificate: without signed
    // attributes, around the data when `attached`, with the certificate in it or, with `addCertChain`, every
    // certificate of its chain. The system may ask the user for the key. Throws CryptoException
    // E_CRYPTO_SIGN or E_CERT_GET_CHAIN, Exception E_BINARY_MAX_SIZE for 4 GiB and more.
    virtual Bytes sign(const Bytes& data, const Certificate& certificate, bool attached,
                       bool addCertChain) const;

    // The certificates of the signers of a CMS message, each of whose signatures is good, in their order in
    // the message. `data` is what a detached message is for, null for an attached one. The certificate of a
    // signer is looked up in `supplied` first, then in the message. No chain is built and no certificate
    // judged. Throws CryptoException E_CRYPTO_VERIFY for the first signature that is not good, also where a
    // message is said to be attached and has no content, and returns nothing then; Exception
    // E_BINARY_MAX_SIZE as sign() does.
    virtual Certificates verifyMessageSignature(const Bytes& signature, const Bytes* data,
                                                const Certificates& supplied) const;

    const ProviderRecord& record() const noexcept { return record_; }

private:
    ProviderRecord record_;
};

namespace Crypto {

using SharedProvider = std::shared_ptr<const CryptoApiProvider>;

// For work without a key, such as verification: the record that defaultProviderRecord() finds.
SharedProvider getDefaultCryptoProvider();

// The provider for the certificate's key: its hash belongs to such keys. Throws Exception
// E_CRYPTO_UNSUPPORTED_PUBLIC_ALGO where no record is for them.
SharedProvider getCryptoProvider(const Certificate& certificate);

}  // namespace Crypto
}  // namespace Corvane
