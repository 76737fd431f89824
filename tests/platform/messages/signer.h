// The signers of a message: as they are written, and as they are read.
#pragma once

#include "message.h"

#include <optional>
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

    // SignerInfo for content of that digest. Without one only the size is right.
    Bytes signerInfo(const Bytes* digest) const;

    const AlgorithmId hash;
    const ALG_ID number;  // of the hash
    const HCRYPTPROV provider;

private:
    Identity identity_;
    AlgorithmId signature_;
    DWORD spec_;
};

// A signer of a message that is read. What it refers to is the message's.
struct ReadSigner {
    View whole, version, afterIdentity;
    Identity identity;
    ALG_ID hash;
    Bytes attributes;  // SET; empty: none
    View signature;

    explicit ReadSigner(View element);
    // PKCS #7's SignerInfo, with a name in the place of a key identifier.
    Bytes named() const;
    // `digest` is the content's. Fails with CRYPT_E_HASH_VALUE or NTE_BAD_SIGNATURE, or
    // CRYPT_E_AUTH_ATTR_MISSING.
    void verify(const CERT_PUBLIC_KEY_INFO& key, View digest, const std::string& contentType) const;

private:
    // The one value of an attribute.
    View attribute(std::string_view type) const;
};

// SignedData (RFC 5652, 5.1), apart from its content.
struct SignedParts {
    std::vector<AlgorithmId> digests;
    std::string contentType = Oid::data;
    std::vector<Bytes> certificates, signers;
    Bytes crls;

    void addDigest(const AlgorithmId& algorithm);
    Layout layout() const;
    // What follows the content.
    Bytes after() const;
};

}  // namespace Corvane::Platform::Messages
