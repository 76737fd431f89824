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

    static Identity of(const CERT_INFO& certificate) {
        return {bytesOf(viewOf(certificate.Issuer)),
                tlv(Tag::integer, reversed(viewOf(certificate.SerialNumber))),
                {}};
    }
    // IssuerAndSerialNumber, or a key identifier with the implicit tag 0.
    static Identity read(const Element& element) {
        if (element.tag == Tag::context(0))
            return {{}, {}, bytesOf(element.content)};
        if (element.tag != Tag::sequence)
            throw BerError("neither a name nor a key identifier");
        Reader reader(element.content);
        const View issuer = reader.next(Tag::sequence).whole;
        return {bytesOf(issuer), bytesOf(reader.next(Tag::integer).whole), {}};
    }
    Bytes der() const {
        return issuer.empty() ? tlv(Tag::context(0), keyIdentifier) : tlv(Tag::sequence, issuer, serial);
    }
    // With a key identifier turned into the name that stands for it in the system's structures.
    Identity asName() const {
        if (!issuer.empty())
            return *this;
        const Bytes name =
            tlv(Tag::sequence, oid(Oid::keyIdentifierName), tlv(Tag::octetString, keyIdentifier));
        return {tlv(Tag::sequence, tlv(Tag::set, name)), integer(0), {}};
    }
    // Issuer and serial number alone are filled.
    CERT_INFO certificateInfo(Flat& flat) const {
        const Identity named = asName();
        CERT_INFO info{};
        info.Issuer = flat.blob(named.issuer);
        info.SerialNumber = flat.blob(reversed(Reader(named.serial).next().content));
        return info;
    }
    CERT_ID certificateId(Flat& flat) const {
        CERT_ID id{};
        id.dwIdChoice = issuer.empty() ? CERT_ID_KEY_IDENTIFIER : CERT_ID_ISSUER_SERIAL_NUMBER;
        const CERT_INFO info = certificateInfo(flat);
        if (issuer.empty())
            id.KeyId = flat.blob(keyIdentifier);
        else
            id.IssuerSerialNumber = {info.Issuer, info.SerialNumber};
        return id;
    }
};

// A signer who is about to sign. Attributes are not taken. Keeps the key's context.
struct NewSigner {
    explicit NewSigner(const CMSG_SIGNER_ENCODE_INFO& info)
        : hash(AlgorithmId::of(info.HashAlgorithm)),
          number(hashNumber(hash.oid)),
          provider(info.hCryptProv),
          spec(info.dwKeySpec ? info.dwKeySpec : AT_SIGNATURE),
          identity(Identity::of(*info.pCertInfo)),
          signature{info.pCertInfo->SubjectPublicKeyInfo.Algorithm.pszObjId, {}} {
        if (!info.hCryptProv || info.cAuthAttr || info.cUnauthAttr)
            fail(E_INVALIDARG);
        if (!number)
            fail(CRYPT_E_UNKNOWN_ALGO);
    }
    // SignerInfo for content of that digest.
    Bytes signerInfo(const Bytes& digest) const {
        return tlv(Tag::sequence, integer(1), identity.der(), hash.der(), signature.der(),
                   tlv(Tag::octetString, signDigest(provider, spec, number, digest)));
    }

    AlgorithmId hash;
    ALG_ID number;  // of the hash
    HCRYPTPROV provider;
    DWORD spec;
    Identity identity;
    AlgorithmId signature;
};

// A signer of a message that is read. What it refers to is the message's.
struct ReadSigner {
    explicit ReadSigner(View element) : whole(element) {
        Reader reader = Reader(element).enter(Tag::sequence);
        version = reader.next(Tag::integer).whole;
        identity = Identity::read(reader.next());
        afterIdentity = reader.rest();
        hash = hashNumber(AlgorithmId::read(reader.enter(Tag::sequence)).oid);
        if (reader.isNext(Tag::within(0))) {
            attributes = bytesOf(reader.next().whole);
            attributes[0] = Tag::set;
        }
        reader.next(Tag::sequence);  // the signature's algorithm, which the key tells
        signature = reader.next(Tag::octetString).content;
    }
    // PKCS #7's SignerInfo, with a name in the place of a key identifier.
    Bytes named() const { return tlv(Tag::sequence, version, identity.asName().der(), afterIdentity); }
    // `digest` is the content's. Fails with CRYPT_E_HASH_VALUE or NTE_BAD_SIGNATURE.
    void verify(const CERT_PUBLIC_KEY_INFO& key, View digest, const std::string& contentType) const {
        if (attributes.empty())
            return verifyDigest(key, hash, digest, signature);
        if (!std::ranges::equal(attribute(Oid::messageDigest), digest))
            fail(CRYPT_E_HASH_VALUE);
        if (oidText(attribute(Oid::contentType)) != contentType)
            fail(CRYPT_E_UNEXPECTED_MSG_TYPE);
        verifyDigest(key, hash, digestOf(hash, attributes), signature);
    }
    // The one value.
    View attribute(std::string_view type) const {
        for (Reader all = Reader(attributes).enter(Tag::set); !all.atEnd();) {
            Reader one = all.enter(Tag::sequence);
            if (oidText(one.next(Tag::oid).content) == type)
                return one.enter(Tag::set).next().content;
        }
        fail(CRYPT_E_AUTH_ATTR_MISSING);
    }

    View whole, version, afterIdentity;
    Identity identity;
    ALG_ID hash;
    Bytes attributes;  // SET; empty: none
    View signature;
};

// SignedData (RFC 5652, 5.1), apart from its content.
struct SignedParts {
    std::vector<AlgorithmId> digests;
    std::string contentType = Oid::data;
    std::vector<Bytes> certificates, signers;

    void addDigest(const AlgorithmId& algorithm) {
        if (std::ranges::find(digests, algorithm.oid, &AlgorithmId::oid) == digests.end())
            digests.push_back(algorithm);
    }
    Layout layout() const {
        Bytes algorithms;
        for (const AlgorithmId& digest : digests)
            append(algorithms, digest.der());
        Bytes head = integer(contentType != Oid::data ? 3 : 1);
        append(head, tlv(Tag::set, algorithms));
        return {oid(Oid::signedData), head, oid(contentType)};
    }
    // What follows the content.
    Bytes after() const {
        Bytes all[2];
        for (const Bytes& certificate : certificates)
            append(all[0], certificate);
        for (const Bytes& signer : signers)
            append(all[1], signer);
        Bytes rest = all[0].empty() ? Bytes() : tlv(Tag::within(0), all[0]);
        return append(rest, tlv(Tag::set, all[1]));
    }
};

}  // namespace Corvane::Platform::Messages
