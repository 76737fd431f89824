// Hashing, signing and keys through the system's providers, chosen as Windows does: by what is registered for
// an algorithm's identifier.
#pragma once

#include "failure.h"  // before other headers that declare crypt32

#include "core/handles.h"

#include <string>
#include <utility>

namespace Corvane::Platform::Messages {

// An algorithm as messages name it; the parameters are DER.
struct AlgorithmId {
    std::string oid;
    Bytes parameters;

    static AlgorithmId read(Reader reader);
    static AlgorithmId of(const CRYPT_ALGORITHM_IDENTIFIER& algorithm);
    Bytes der() const;
    // Refers to this object's members.
    CRYPT_ALGORITHM_IDENTIFIER view();
};

// The algorithm's number in a group of identifiers, 0 where there is none.
ALG_ID algorithmNumber(const std::string& oid, DWORD group);

// A context without keys in which the hash can be made: the system's own, or one of the type that a
// registered signature algorithm names. It stays open. Fails with CRYPT_E_UNKNOWN_ALGO.
HCRYPTPROV providerForHash(ALG_ID hash);

// A running hash, made in `provider` or where the algorithm is known.
class Digest {
public:
    explicit Digest(ALG_ID algorithm, HCRYPTPROV provider = 0);
    void add(View bytes);
    // Of all that was added; nothing can be added any more.
    const Bytes& value();
    DWORD size() const;

private:
    CryptHash hash_;
    Bytes value_;
};

Bytes digestOf(ALG_ID algorithm, View bytes);

// Signatures are big-endian, as messages have them.
Bytes signDigest(HCRYPTPROV provider, DWORD spec, ALG_ID algorithm, View digest);
DWORD signatureSize(HCRYPTPROV provider, DWORD spec, ALG_ID algorithm);
// Fails with NTE_BAD_SIGNATURE.
void verifyDigest(const CERT_PUBLIC_KEY_INFO& key, ALG_ID algorithm, View digest, View signature);

}  // namespace Corvane::Platform::Messages
