// The algorithms of the provider, by every name that the system and messages have for them: RFC 4357, 4490,
// 4491 and 9215; the numbers of CryptoAPI are those of the providers that people have.
#pragma once

#include "../failure.h"

#include <gcrypt.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace Corvane::Platform::Gost {

struct Algorithm {
    const wchar_t* provider;
    DWORD providerType;
    const char* keyOid;
    ALG_ID keyId;
    std::size_t size;   // of a private key, of half a public key, and of a hash, in bytes
    const char* curve;  // of keys that are made here
    const char* hashOid;
    ALG_ID hashId;
    int digest;  // libgcrypt's number
    const char* signatureOid;
    const char* substitution;  // of GOST 28147-89, for messages
    ALG_ID ephemeralId;        // of pairs for one agreement
    ALG_ID keyWrapId;          // by which private keys are exported under an agreed key
};

constexpr char cipherOid[] = "1.2.643.2.2.21";
constexpr ALG_ID cipherId = 0x661E;
// KP_CIPHEROID of these providers: the substitution of a session key, by its identifier.
constexpr DWORD substitutionParameter = 104;

inline constexpr Algorithm algorithms[] = {
    {L"Crypto-Pro GOST R 34.10-2001 Cryptographic Service Provider", 75, "1.2.643.2.2.19", 0x2E23, 32,
     "1.2.643.2.2.35.1", "1.2.643.2.2.9", 0x801E, GCRY_MD_GOSTR3411_CP, "1.2.643.2.2.3", "1.2.643.2.2.31.1",
     0xAA25, 0x661F},
    {L"Crypto-Pro GOST R 34.10-2012 Cryptographic Service Provider", 80, "1.2.643.7.1.1.1.1", 0x2E49, 32,
     "1.2.643.7.1.2.1.1.1", "1.2.643.7.1.1.2.2", 0x8021, GCRY_MD_STRIBOG256, "1.2.643.7.1.1.3.2",
     "1.2.643.7.1.2.5.1.1", 0xAA47, 0x6621},
    {L"Crypto-Pro GOST R 34.10-2012 Strong Cryptographic Service Provider", 81, "1.2.643.7.1.1.1.2", 0x2E3D,
     64, "1.2.643.7.1.2.1.2.1", "1.2.643.7.1.1.2.3", 0x8022, GCRY_MD_STRIBOG512, "1.2.643.7.1.1.3.3",
     "1.2.643.7.1.2.5.1.1", 0xAA43, 0x6621},
};

// By what the number or the text is; null where there is none.
template <class Value, class Member>
const Algorithm* findAlgorithm(const Value& value, Member member) {
    const auto* found = std::ranges::find(algorithms, value, member);
    return found == std::end(algorithms) ? nullptr : found;
}

// An exported function's body: what it throws becomes the last error.
template <class Body>
BOOL entry(Body&& body) noexcept {
    return succeedsWith<NTE_BAD_DATA, NTE_FAIL>(body);
}

}  // namespace Corvane::Platform::Gost
