// Hashes, signatures, ciphers and keys by the system's providers and those of GOST.
#pragma once

#include "../failure.h"  // before other headers that declare crypt32

#include "core/handles.h"

#include <string>

namespace Corvane::Platform::Messages {

constexpr DWORD encodings = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;

template <class Body>
bool succeeds(Body&& body) noexcept {
    return succeedsWith<CRYPT_E_ASN1_EOD, E_UNEXPECTED>(body);
}

// AlgorithmIdentifier, with NULL where there are no parameters.
inline Bytes algorithm(std::string_view name, const Bytes& parameters = {Tag::null, 0}) {
    return tlv(Tag::sequence, oid(name), parameters);
}

// A running hash. Fails with CRYPT_E_UNKNOWN_ALGO.
class Digest {
public:
    explicit Digest(const std::string& oid);
    void add(View bytes);
    // Of all that was added; nothing can be added any more.
    const Bytes& value();

private:
    CryptHash hash_;
    Bytes value_;
};

// Signatures are big-endian, as messages have them.
Bytes signDigest(HCRYPTPROV provider, DWORD spec, const std::string& hash, const Bytes& digest);
// Fails with NTE_BAD_SIGNATURE.
void verifyDigest(CERT_PUBLIC_KEY_INFO key, const std::string& hash, const Bytes& digest, View signature);

// CryptEncrypt or CryptDecrypt over content that comes in pieces of any size.
class ContentCipher {
public:
    // With a new key, and with one that was received.
    ContentCipher(HCRYPTPROV provider, const std::string& cipher);
    ContentCipher(HCRYPTPROV provider, DWORD spec, Reader algorithm, View encryptedKey);

    // The algorithm with its parameters.
    Bytes identifier() const;
    // The key as it is sent to a recipient.
    Bytes keyFor(HCRYPTPROV provider, CERT_PUBLIC_KEY_INFO recipient) const;
    // The output for what came; a part of a block waits for more.
    Bytes process(View bytes, bool isFinal);

private:
    void set(DWORD parameter, const void* value) const;
    std::size_t blockSize() const;

    CryptKey key_;
    std::string oid_;
    Bytes vector_;
    bool isEncryption_;
    Bytes waiting_;
};

}  // namespace Corvane::Platform::Messages
