// Hashes, and signing and verifying with them. Signatures of CryptoAPI are the other way round than in
// messages.
#include "objects.h"

namespace Corvane::Platform::Gost {

const Bytes& Hash::finish() {
    if (value.empty()) {
        const unsigned char* digest = ::gcry_md_read(running.get(), 0);
        value.assign(digest, digest + algorithm->hashSize);
    }
    return value;
}

namespace {

HCRYPTHASH create(const Context& context, ALG_ID id, HCRYPTKEY key, DWORD flags) {
    if (flags)
        fail(NTE_BAD_FLAGS);
    if (id != context.algorithm->hashId)
        fail(NTE_BAD_ALGID);
    if (key)
        fail(NTE_BAD_KEY);
    auto hash = std::make_unique<Hash>();
    hash->algorithm = context.algorithm;
    gcry_md_hd_t running = nullptr;
    if (::gcry_md_open(&running, context.algorithm->digest, 0))
        fail(NTE_FAIL);
    hash->running.reset(running);
    return hashes.add(std::move(hash));
}

Bytes parameter(Hash& hash, DWORD which) {
    if (which == HP_HASHVAL)
        return hash.finish();
    if (which != HP_HASHSIZE && which != HP_ALGID)
        fail(NTE_BAD_TYPE);
    const DWORD number =
        which == HP_ALGID ? hash.algorithm->hashId : static_cast<DWORD>(hash.algorithm->hashSize);
    const View bytes = bytesOf(number);
    return {bytes.begin(), bytes.end()};
}

void signHash(const Context& context, Hash& hash, DWORD spec, BYTE* buffer, DWORD* size) {
    if (spec != AT_KEYEXCHANGE && spec != AT_SIGNATURE)
        fail(NTE_BAD_KEY);
    const auto stored = context.hasContainer ? loadKey(context.container, spec) : std::nullopt;
    if (!stored || stored->pair.algorithm != context.algorithm)
        fail(NTE_NO_KEY);
    if (!buffer)
        return give(buffer, size, stored->pair.publicHalf);  // as long as a signature
    give(buffer, size, reversed(sign(stored->pair.curve, stored->pair.secret, hash.finish())));
}

void verifyHash(Hash& hash, View signature, const Key& key) {
    if (key.isSession())
        fail(NTE_BAD_KEY);
    if (key.pair.algorithm != hash.algorithm)
        fail(NTE_BAD_ALGID);
    if (!verify(key.pair.curve, key.pair.publicHalf, hash.finish(), reversed(signature)))
        fail(NTE_BAD_SIGNATURE);
}

}  // namespace
}  // namespace Corvane::Platform::Gost

using namespace Corvane::Platform;
using namespace Corvane::Platform::Gost;

extern "C" {

BOOL WINAPI CPCreateHash(HCRYPTPROV context, ALG_ID id, HCRYPTKEY key, DWORD flags, HCRYPTHASH* hash) {
    return entry([&] { *hash = create(contexts.get(context), id, key, flags); });
}

BOOL WINAPI CPHashData(HCRYPTPROV, HCRYPTHASH handle, const BYTE* data, DWORD size, DWORD flags) {
    return entry([&] {
        Hash& hash = hashes.get(handle);
        if (flags)
            fail(NTE_BAD_FLAGS);
        if (!hash.value.empty())
            fail(NTE_BAD_HASH_STATE);
        ::gcry_md_write(hash.running.get(), data, size);
    });
}

BOOL WINAPI CPHashSessionKey(HCRYPTPROV, HCRYPTHASH, HCRYPTKEY, DWORD) {
    return entry([] { fail(E_NOTIMPL); });
}

BOOL WINAPI CPDuplicateHash(HCRYPTPROV, HCRYPTHASH, DWORD*, DWORD, HCRYPTHASH*) {
    return entry([] { fail(E_NOTIMPL); });
}

BOOL WINAPI CPDestroyHash(HCRYPTPROV, HCRYPTHASH hash) {
    return entry([&] { hashes.remove(hash); });
}

BOOL WINAPI CPGetHashParam(HCRYPTPROV, HCRYPTHASH hash, DWORD which, BYTE* buffer, DWORD* size, DWORD) {
    return entry([&] { give(buffer, size, parameter(hashes.get(hash), which)); });
}

BOOL WINAPI CPSetHashParam(HCRYPTPROV, HCRYPTHASH handle, DWORD which, BYTE* value, DWORD) {
    return entry([&] {
        Hash& hash = hashes.get(handle);
        if (which != HP_HASHVAL)
            fail(NTE_BAD_TYPE);
        hash.value.assign(value, value + hash.algorithm->hashSize);
    });
}

BOOL WINAPI CPSignHash(HCRYPTPROV context, HCRYPTHASH hash, DWORD spec, LPCWSTR description, DWORD flags,
                       BYTE* buffer, DWORD* size) {
    return entry([&] {
        if (flags || description)
            fail(NTE_BAD_FLAGS);
        signHash(contexts.get(context), hashes.get(hash), spec, buffer, size);
    });
}

BOOL WINAPI CPVerifySignature(HCRYPTPROV, HCRYPTHASH hash, const BYTE* signature, DWORD size, HCRYPTKEY key,
                              LPCWSTR description, DWORD flags) {
    return entry([&] {
        if (flags || description)
            fail(NTE_BAD_FLAGS);
        verifyHash(hashes.get(hash), View(signature, size), keys.get(key));
    });
}

}  // extern "C"
