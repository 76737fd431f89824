// Hashes, signatures, ciphers and keys by the system's providers and those of GOST.
#pragma once

#include "../failure.h"  // before other headers that declare crypt32

#include "core/handles.h"

#include <string>
#include <utility>

namespace Corvane::Platform::Messages {

constexpr DWORD encodings = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;

// An algorithm as messages name it; the parameters are DER.
struct AlgorithmId {
    std::string oid;
    Bytes parameters;

    static AlgorithmId read(Reader reader);
    static AlgorithmId of(const CRYPT_ALGORITHM_IDENTIFIER& algorithm);
    // With NULL where there are no parameters.
    Bytes der() const;
};

// 0 where there is none.
ALG_ID hashNumber(const std::string& oid);

// A running hash, made in `provider` or in one that knows the algorithm. Fails with CRYPT_E_UNKNOWN_ALGO.
class Digest {
public:
    explicit Digest(ALG_ID algorithm, HCRYPTPROV provider = 0);
    void add(View bytes);
    // Of all that was added; nothing can be added any more.
    const Bytes& value();

private:
    CryptHash hash_;
    Bytes value_;
};

Bytes digestOf(ALG_ID algorithm, View bytes);

// Signatures are big-endian, as messages have them.
Bytes signDigest(HCRYPTPROV provider, DWORD spec, ALG_ID algorithm, const Bytes& digest);
// Fails with NTE_BAD_SIGNATURE.
void verifyDigest(const CERT_PUBLIC_KEY_INFO& key, ALG_ID algorithm, View digest, View signature);

// A new key for content; the algorithm's parameters are filled in.
CryptKey makeContentKey(HCRYPTPROV provider, AlgorithmId& algorithm);
// Encrypted for a recipient, and received.
Bytes exportContentKey(HCRYPTPROV provider, HCRYPTKEY key, CERT_PUBLIC_KEY_INFO recipient);
CryptKey importContentKey(HCRYPTPROV provider, DWORD spec, const AlgorithmId& content,
                          const std::string& transport, View encrypted);

// CryptEncrypt or CryptDecrypt over content that comes in pieces of any size.
class ContentCipher {
public:
    ContentCipher(CryptKey key, bool isEncryption);
    // The output for what came; a part of a block waits for more.
    Bytes process(View bytes, bool isFinal);

private:
    CryptKey key_;
    bool isEncryption_;
    std::size_t block_;  // in bytes
    Bytes waiting_;
};

}  // namespace Corvane::Platform::Messages
