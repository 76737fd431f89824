// One signer of a message, as it is written.
#pragma once

#include "message.h"

#include <vector>

namespace Corvane::Platform::Messages {

// Who signs or receives: an issuer and a serial number (DER), or a key identifier.
struct Identity {
    Bytes issuer, serial;
    Bytes keyIdentifier;

    static Identity of(const CERT_INFO& certificate);
    // IssuerAndSerialNumber, or a key identifier with the implicit tag 0.
    static Identity read(const Element& element);
    Bytes der() const;
    bool isKeyIdentifier() const { return !keyIdentifier.empty(); }
    // With a key identifier turned into the name that stands for it in the system's structures.
    Identity asName() const;
    // Issuer and serial number alone are filled.
    CERT_INFO certificateInfo(Flat& flat) const;
    CERT_ID certificateId(Flat& flat) const;
};

// A signer who is about to sign.
class NewSigner {
public:
    // Attributes are not taken. Keeps the key's context.
    explicit NewSigner(const CMSG_SIGNER_ENCODE_INFO& info);

    const AlgorithmId& hash() const { return hash_; }
    ALG_ID hashNumber() const { return hashNumber_; }
    HCRYPTPROV provider() const { return provider_; }
    // SignerInfo for content of that digest. Without one only the size is right.
    Bytes signerInfo(const Bytes* digest) const;

private:
    Identity identity_;
    AlgorithmId hash_, signature_;
    ALG_ID hashNumber_;
    HCRYPTPROV provider_;
    DWORD spec_;
};

// A signer of a message that is read. What it refers to is the message's.
struct ReadSigner {
    View whole;
    DWORD version = 0;
    Identity identity;
    AlgorithmId hash, signatureAlgorithm;
    Bytes attributes;  // SET; empty: none
    Bytes unauthenticated;
    Bytes signature;

    explicit ReadSigner(View element);
    // The one value of an attribute; fails with CRYPT_E_AUTH_ATTR_MISSING.
    Bytes attribute(std::string_view type) const;
    // PKCS #7's SignerInfo, with a name in the place of a key identifier.
    Bytes named() const;
    // `digest` is the content's. Fails with CRYPT_E_HASH_VALUE or NTE_BAD_SIGNATURE.
    void verify(const CERT_PUBLIC_KEY_INFO& key, View digest, const std::string& contentType) const;
};

}  // namespace Corvane::Platform::Messages
