#include "algorithms.h"

#include <gcrypt.h>

#include <algorithm>

namespace Corvane::Platform::Gost {

const Algorithm algorithms[3] = {
    {L"Crypto-Pro GOST R 34.10-2001 Cryptographic Service Provider", 75, L"GOST R 34.10-2001",
     "1.2.643.2.2.19", 0x2E23, 32, "1.2.643.2.2.35.1", L"GOST R 34.11-94", "1.2.643.2.2.9", 0x801E,
     GCRY_MD_GOSTR3411_CP, 32, L"GOST R 34.11/34.10-2001", "1.2.643.2.2.3", "1.2.643.2.2.31.1", 0xAA25,
     0x661F},
    {L"Crypto-Pro GOST R 34.10-2012 Cryptographic Service Provider", 80, L"GOST R 34.10-2012 256 bit",
     "1.2.643.7.1.1.1.1", 0x2E49, 32, "1.2.643.7.1.2.1.1.1", L"GOST R 34.11-2012 256 bit",
     "1.2.643.7.1.1.2.2", 0x8021, GCRY_MD_STRIBOG256, 32, L"GOST R 34.11-2012/34.10-2012 256 bit",
     "1.2.643.7.1.1.3.2", "1.2.643.7.1.2.5.1.1", 0xAA47, 0x6621},
    {L"Crypto-Pro GOST R 34.10-2012 Strong Cryptographic Service Provider", 81, L"GOST R 34.10-2012 512 bit",
     "1.2.643.7.1.1.1.2", 0x2E3D, 64, "1.2.643.7.1.2.1.2.1", L"GOST R 34.11-2012 512 bit",
     "1.2.643.7.1.1.2.3", 0x8022, GCRY_MD_STRIBOG512, 64, L"GOST R 34.11-2012/34.10-2012 512 bit",
     "1.2.643.7.1.1.3.3", "1.2.643.7.1.2.5.1.1", 0xAA43, 0x6621},
};

const Algorithm* findByType(DWORD providerType) {
    const auto* found = std::ranges::find(algorithms, providerType, &Algorithm::providerType);
    return found == std::end(algorithms) ? nullptr : found;
}

const Algorithm* findByKeyOid(std::string_view oid) {
    const auto* found = std::ranges::find(algorithms, oid, &Algorithm::keyOid);
    return found == std::end(algorithms) ? nullptr : found;
}

}  // namespace Corvane::Platform::Gost
