// A key of GOST R 34.10, and how it is written in certificates (RFC 4491, 9215), key files and key transport
// (RFC 4490).
#pragma once

#include "algorithms.h"
#include "arithmetic.h"

namespace Corvane::Platform::Gost {

struct KeyPair {
    const Algorithm* algorithm = nullptr;
    std::string curve;
    Bytes secret;  // empty: the public half alone
    Bytes publicHalf;
};

// A session key for GOST 28147-89.
struct SessionKey {
    Bytes key;
    std::string substitution;
};

constexpr std::size_t ukmSize = 8;

inline Bytes algorithmIdentifier(const KeyPair& key) {
    Bytes digest;
    if (key.algorithm->providerType == 75)
        digest = oid("1.2.643.2.2.30.1");
    else if (!key.curve.starts_with("1.2.643.7.1.2.1.1."))
        digest = oid(key.algorithm->hashOid);
    return tlv(Tag::sequence, oid(key.algorithm->keyOid), tlv(Tag::sequence, oid(key.curve), digest));
}

inline KeyPair readAlgorithm(BerReader reader) {
    KeyPair key;
    key.algorithm = findAlgorithm(reader.readOid(), &Algorithm::keyOid);
    if (!key.algorithm)
        fail(NTE_BAD_ALGID);
    key.curve = reader.enter(Tag::sequence).readOid();
    return key;
}

inline KeyPair readPublicParts(BerReader reader) {
    KeyPair key = readAlgorithm(reader.enter(Tag::sequence));
    key.publicHalf = bytesOf(Reader(reader.read(Tag::bitString).subspan(1)).read(Tag::octetString));
    if (key.publicHalf.size() != 2 * key.algorithm->size)
        fail(NTE_BAD_DATA);
    return key;
}

inline Bytes publicParts(const KeyPair& key) {
    Bytes parts = algorithmIdentifier(key);
    return append(parts, DerWriter().bitString(tlv(Tag::octetString, key.publicHalf)).take());
}

// Both algorithms of 2012 use the hash of 256 bits here.
inline Bytes agree(const KeyPair& own, const KeyPair& other, View ukm) {
    return agree(own.curve, own.secret, other.publicHalf, ukm,
                 algorithms[own.algorithm->providerType == 75 ? 0 : 1].digest);
}

inline KeyPair makeKeyPair(const Algorithm& algorithm, const std::string& curve) {
    KeyPair key{&algorithm, curve, makePrivateKey(algorithm.size), {}};
    key.publicHalf = publicKey(curve, key.secret);
    return key;
}

// SubjectPublicKeyInfo
inline Bytes publicKeyInfo(const KeyPair& key) {
    return tlv(Tag::sequence, publicParts(key));
}

inline KeyPair readPublicKeyInfo(View der) {
    return readPublicParts(Reader(der).enter(Tag::sequence));
}

// PrivateKeyInfo (PKCS #8), as OpenSSL's engine writes it: the key little-endian in the octet string.
inline Bytes privateKeyInfo(const KeyPair& key) {
    return tlv(Tag::sequence, integer(0), algorithmIdentifier(key), tlv(Tag::octetString, key.secret));
}

inline KeyPair readPrivateKeyInfo(View der) {
    BerReader reader = Reader(der).enter(Tag::sequence);
    reader.skip();  // the version
    KeyPair key = readAlgorithm(reader.enter(Tag::sequence));
    key.secret = bytesOf(reader.read(Tag::octetString));
    if (key.secret.size() != key.algorithm->size)
        fail(NTE_BAD_DATA);
    key.publicHalf = publicKey(key.curve, key.secret);
    return key;
}

// GostR3410-KeyTransport
inline Bytes transport(const SessionKey& session, const KeyPair& recipient) {
    const KeyPair ephemeral = makeKeyPair(*recipient.algorithm, recipient.curve);
    const Bytes ukm = randomBytes(ukmSize);
    const WrappedKey wrapped = wrap(session.substitution, agree(ephemeral, recipient, ukm), ukm, session.key);
    return tlv(
        Tag::sequence,
        tlv(Tag::sequence, tlv(Tag::octetString, wrapped.encrypted), tlv(Tag::octetString, wrapped.mac)),
        tlv(Tag::context(0), oid(session.substitution), tlv(Tag::context(0), publicParts(ephemeral)),
            tlv(Tag::octetString, ukm)));
}

// Fails with NTE_BAD_DATA where it was not made for that key.
inline SessionKey receive(View transport, const KeyPair& recipient) {
    BerReader reader = Reader(transport).enter(Tag::sequence);
    BerReader encrypted = reader.enter(Tag::sequence);
    WrappedKey wrapped;
    wrapped.encrypted = bytesOf(encrypted.read(Tag::octetString));
    wrapped.mac = bytesOf(encrypted.read(Tag::octetString));
    BerReader parameters = reader.enter(Tag::context(0));
    SessionKey session;
    session.substitution = parameters.readOid();
    const KeyPair ephemeral = readPublicParts(parameters.enter(Tag::context(0)));
    const Bytes ukm = bytesOf(parameters.read(Tag::octetString));
    constexpr std::size_t sessionKeySize = 32;
    if (ukm.size() != ukmSize || wrapped.encrypted.size() != sessionKeySize ||
        ephemeral.curve != recipient.curve)
        fail(NTE_BAD_DATA);
    session.key = unwrap(session.substitution, agree(recipient, ephemeral, ukm), ukm, wrapped);
    if (session.key.empty())
        fail(NTE_BAD_DATA);
    return session;
}

// The key that both pairs agree on, with a fixed UKM: for private keys on their way between two containers.
inline SessionKey agreeOn(const KeyPair& own, const KeyPair& other) {
    Bytes ukm(ukmSize);
    ukm.front() = 1;
    return {agree(own, other, ukm), own.algorithm->substitution};
}

}  // namespace Corvane::Platform::Gost
