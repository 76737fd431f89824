// The algorithms of the provider, by every name that the system and messages have for them: RFC 4357, 4490,
// 4491 and 9215; the numbers of CryptoAPI are those of the providers that people have.
#pragma once

#include "../failure.h"

#include <string>
#include <string_view>

namespace Corvane::Platform::Gost {

struct Algorithm {
    const wchar_t* provider;
    DWORD providerType;
    const wchar_t* keyName;
    const char* keyOid;
    ALG_ID keyId;
    std::size_t size;   // of a private key and of half a public key, in bytes
    const char* curve;  // of keys that are made here
    const wchar_t* hashName;
    const char* hashOid;
    ALG_ID hashId;
    int digest;  // libgcrypt's number
    std::size_t hashSize;
    const wchar_t* signatureName;
    const char* signatureOid;
    const char* substitution;  // of GOST 28147-89, for messages
    ALG_ID ephemeralId;        // of pairs for one agreement
    ALG_ID keyWrapId;          // by which private keys are exported under an agreed key
};

constexpr char cipherOid[] = "1.2.643.2.2.21";
constexpr ALG_ID cipherId = 0x661E;
// KP_CIPHEROID of these providers: the substitution of a session key, by its identifier.
constexpr DWORD substitutionParameter = 104;

extern const Algorithm algorithms[3];

// Null where there is none.
const Algorithm* findByType(DWORD providerType);
const Algorithm* findByKeyOid(std::string_view oid);

// An exported function's body: what it throws becomes the last error.
template <class Body>
BOOL entry(Body&& body) noexcept {
    return succeedsWith<NTE_BAD_DATA, NTE_BAD_DATA, NTE_FAIL>(body);
}

}  // namespace Corvane::Platform::Gost
