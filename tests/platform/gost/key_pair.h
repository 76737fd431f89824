// A key of GOST R 34.10, and how it is written in certificates (RFC 4491, 9215), key files and key transport
// (RFC 4490).
#pragma once

#include "algorithms.h"

namespace Corvane::Platform::Gost {

struct KeyPair {
    const Algorithm* algorithm = nullptr;
    std::string curve;
    Bytes secret;  // empty: the public half alone
    Bytes publicHalf;
};

KeyPair makeKeyPair(const Algorithm& algorithm, const std::string& curve);

// SubjectPublicKeyInfo
Bytes publicKeyInfo(const KeyPair& key);
KeyPair readPublicKeyInfo(View der);

// PrivateKeyInfo (PKCS #8), as OpenSSL's engine writes it: the key little-endian in the octet string.
Bytes privateKeyInfo(const KeyPair& key);
KeyPair readPrivateKeyInfo(View der);

// A session key for GOST 28147-89.
struct SessionKey {
    Bytes key;
    std::string substitution;
};

// GostR3410-KeyTransport
Bytes transport(const SessionKey& session, const KeyPair& recipient);
// Fails with NTE_BAD_DATA where it was not made for that key.
SessionKey receive(View transport, const KeyPair& recipient);

// The key that both pairs agree on, with a fixed UKM: for private keys on their way between two containers.
SessionKey agreeOn(const KeyPair& own, const KeyPair& other);

}  // namespace Corvane::Platform::Gost
