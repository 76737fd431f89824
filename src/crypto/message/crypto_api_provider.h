// Cryptographic operations by way of CryptoAPI, with the algorithms of one provider record.
#pragma once

#include "binary/bytes.h"
#include "core/progress.h"
#include "crypto/certificate/certificate.h"
#include "crypto/provider/provider_record.h"
#include "stream/binary_stream.h"

#include <memory>
#include <utility>

namespace Corvane {

// Has no state but its record: any thread may use it.
//
// Messages are CMS (RFC 5652). Every operation on messages may throw CryptoException
// E_CRYPTO_MESSAGE_OPEN_ENCODE, E_CRYPTO_MESSAGE_OPEN_DECODE, E_CRYPTO_MESSAGE_UPDATE and
// E_CRYPTO_MESSAGE_PARAM, with the system's error, where nothing else is said. Operations on bytes throw
// Exception E_BINARY_MAX_SIZE for 4 GiB and more. Operations on streams work from the streams' positions,
// hold a few mebibytes, see E_CANCELED, and throw what the streams throw.
class CryptoApiProvider {
public:
    explicit CryptoApiProvider(ProviderRecord record) noexcept : record_(std::move(record)) {}
    virtual ~CryptoApiProvider() = default;
    CryptoApiProvider(const CryptoApiProvider&) = delete;
    CryptoApiProvider& operator=(const CryptoApiProvider&) = delete;

    // A message signed with the private key of the certificate: without signed attributes, around the data
    // when `attached`, with the certificate in it or, with `addCertChain`, every certificate of its chain.
    // The system may ask the user for the key. Throws CryptoException E_CRYPTO_SIGN or E_CERT_GET_CHAIN.
    virtual Bytes sign(const Bytes& data, const Certificate& certificate, bool attached,
                       bool addCertChain) const;
    // The same from a stream to a stream, of definite length below 4 GiB; the output ends behind it. What was
    // written before a failure or a cancellation stays. Throws besides E_READ_OR_WRONG_FILE_SIZE where the
    // input changed its size. One stream for both is E_CRYPTO_SIGN, as it is the error of each operation
    // below that writes a stream.
    virtual void sign(Stream::IBinaryStream& input, Stream::IBinaryStream& output,
                      const Certificate& certificate, bool attached, bool addCertChain,
                      const SharedProgress& progress) const;

    // A bare GOST signature over the hash of the data that belongs to the certificate's key, in the byte
    // order of CMS and of OpenSSL: the halves s and r (RFC 4491, RFC 9215), most significant byte first.
    // Throws Exception E_CRYPTO_UNSUPPORTED_PUBLIC_ALGO for other keys, RSA included; CryptoException
    // E_CRYPTO_HASH, E_CRYPTO_SIGN.
    virtual Bytes rawSign(const Bytes& data, const Certificate& certificate) const;

    // The signed message with one more signer, and the certificates that it has not yet. `data` is what a
    // detached message is for, null for an attached one. The result is verified before it is returned, as far
    // as it carries its signers' certificates. Throws CryptoException E_CRYPTO_MESSAGE_ADD_SIGNER for every
    // step that fails, also where the message cannot be read, data are missing or not wanted, or the
    // signatures do not hold for them; but E_CRYPTO_MESSAGE_ADD_CERT and E_CERT_GET_CHAIN for those.
    virtual Bytes addSignerToSignature(const Bytes& signature, const Bytes* data,
                                       const Certificate& certificate, bool addCertChain) const;

    // The certificates of the signers of a message, each of whose signatures is good, in their order in the
    // message. `data` is what a detached message is for, null for an attached one. The certificate of a
    // signer is looked up in `supplied` first, then in the message. No chain is built and no certificate
    // judged. Throws CryptoException E_CRYPTO_VERIFY for the first signature that is not good, also where a
    // message is said to be attached and has no content, and beyond 1,000 signers, and returns nothing then.
    virtual Certificates verifyMessageSignature(const Bytes& signature, const Bytes* data,
                                                const Certificates& supplied) const;
    // The same for data, or an attached message, in a stream.
    virtual Certificates verifyMessageSignature(const Bytes& signature, Stream::IBinaryStream& data,
                                                const Certificates& supplied,
                                                const SharedProgress& progress) const;
    virtual Certificates verifyMessageSignature(Stream::IBinaryStream& signature,
                                                const Certificates& supplied,
                                                const SharedProgress& progress) const;

    // All certificates that a signed message carries; nothing is verified. Throws CryptoException
    // E_CRYPTO_EXTRACT_CERT.
    virtual Certificates getCertificatesFromSignature(const Bytes& signature) const;
    virtual Certificates extractCertificatesFromSignature(Stream::IBinaryStream& input,
                                                          const SharedProgress& progress) const;

    // The content of an attached message; nothing is verified. Throws CryptoException
    // E_CRYPTO_EXTRACT_CONTENT where there is none. Without success nothing stays in the output.
    virtual Bytes getContentFromSignature(const Bytes& signature) const;
    virtual void extractContentFromSignature(Stream::IBinaryStream& input, Stream::IBinaryStream& output,
                                             const SharedProgress& progress) const;

    // An enveloped message that the key of each recipient opens, with the record's cipher. Throws
    // CryptoException E_CRYPTO_PROVIDER, and E_CRYPTO_ENCRYPT, also for no recipients. Without success
    // nothing stays in the output.
    virtual Bytes encrypt(const Bytes& data, const Certificates& recipients) const;
    virtual void encrypt(Stream::IBinaryStream& input, Stream::IBinaryStream& output,
                         const Certificates& recipients, const SharedProgress& progress) const;

    // The content of an enveloped message, by the key of the first of its recipients' certificates that is in
    // the user's store "My" or else in the machine's. Throws CryptoException E_CRYPTO_DECRYPT and
    // E_CERT_STORE_OPEN, and std::runtime_error "certificate not found". Without success nothing stays in the
    // output.
    virtual Bytes decrypt(const Bytes& message) const;
    virtual void decrypt(Stream::IBinaryStream& input, Stream::IBinaryStream& output,
                         const SharedProgress& progress) const;

    const ProviderRecord& record() const noexcept { return record_; }

private:
    ProviderRecord record_;
};

}  // namespace Corvane
