// Hashes, and signing and verifying with them. Signatures of CryptoAPI are the other way round than in
// messages.
#include "provider.h"

namespace Corvane::Platform::Gost {

namespace {

HCRYPTHASH create(const Algorithm* algorithm, ALG_ID id) {
    if (id != algorithm->hashId)
        fail(NTE_BAD_ALGID);
    auto hash = std::make_unique<Hash>();
    hash->algorithm = algorithm;
    gcry_md_hd_t running = nullptr;
    if (::gcry_md_open(&running, algorithm->digest, 0))
        fail(NTE_FAIL);
    hash->running.reset(running);
    return handleOf(std::move(hash));
}

void verifyHash(Hash& hash, View signature, const Key& key) {
    if (key.pair.algorithm != hash.algorithm)
        fail(NTE_BAD_KEY);
    if (!verify(key.pair.curve, key.pair.publicHalf, hash.finish(), reversed(signature)))
        fail(NTE_BAD_SIGNATURE);
}

}  // namespace
}  // namespace Corvane::Platform::Gost

using namespace Corvane::Platform;
using namespace Corvane::Platform::Gost;

extern "C" {

BOOL WINAPI CPCreateHash(HCRYPTPROV context, ALG_ID id, HCRYPTKEY key, DWORD flags, HCRYPTHASH* hash) {
    return entry([&] {
        expectNone(flags);
        *hash = key ? (fail(NTE_BAD_KEY), 0) : create(objectOf<Context>(context).algorithm, id);
    });
}

BOOL WINAPI CPHashData(HCRYPTPROV, HCRYPTHASH handle, const BYTE* data, DWORD size, DWORD flags) {
    return entry([&] {
        Hash& hash = objectOf<Hash>(handle);
        expectNone(flags);
        ::gcry_md_write(hash.running.get(), data, size);
    });
}

BOOL WINAPI CPDestroyHash(HCRYPTPROV, HCRYPTHASH hash) {
    return entry([&] { delete &objectOf<Hash>(hash); });
}

BOOL WINAPI CPGetHashParam(HCRYPTPROV, HCRYPTHASH hash, DWORD which, BYTE* buffer, DWORD* size, DWORD) {
    return entry([&] {
        give(buffer, size,
             which == HP_HASHVAL ? objectOf<Hash>(hash).finish() : (fail(NTE_BAD_TYPE), Bytes()));
    });
}

BOOL WINAPI CPSetHashParam(HCRYPTPROV, HCRYPTHASH handle, DWORD, BYTE* value, DWORD) {
    return entry([&] {
        Hash& hash = objectOf<Hash>(handle);
        hash.value.assign(value, value + hash.algorithm->hashSize);
    });
}

BOOL WINAPI CPSignHash(HCRYPTPROV context, HCRYPTHASH hash, DWORD spec, LPCWSTR description, DWORD flags,
                       BYTE* buffer, DWORD* size) {
    return entry([&] {
        expectNone(flags || description);
        const auto key = loadKey(objectOf<Context>(context), spec);
        if (!buffer)
            return give(buffer, size, key->pair.publicHalf);  // as long as a signature
        give(buffer, size, reversed(sign(key->pair.curve, key->pair.secret, objectOf<Hash>(hash).finish())));
    });
}

BOOL WINAPI CPVerifySignature(HCRYPTPROV, HCRYPTHASH hash, const BYTE* signature, DWORD size, HCRYPTKEY key,
                              LPCWSTR description, DWORD flags) {
    return entry([&] {
        expectNone(flags || description);
        verifyHash(objectOf<Hash>(hash), View(signature, size), objectOf<Key>(key));
    });
}

}  // extern "C"
