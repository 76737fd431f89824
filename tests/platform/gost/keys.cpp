// Keys: making, finding, importing, exporting, and encrypting with them. Hashes, and signing and verifying
// with them; signatures of CryptoAPI are the other way round than in messages.
#include "provider.h"

namespace Corvane::Platform::Gost {
namespace {

constexpr std::size_t blockSize = 8, sessionKeySize = 32;

// A private key under an agreed one, in the one direction or the other; under none, as it is.
Bytes underAgreed(HCRYPTKEY handle, View der, bool isEncryption) {
    if (!handle)
        return bytesOf(der);
    const Key& agreed = objectOf<Key>(handle);
    if (!agreed.wrapsKeys)
        fail(NTE_BAD_KEY);
    return transform(agreed.session.substitution, GCRY_CIPHER_MODE_CFB, agreed.session.key, agreed.iv, der,
                     isEncryption);
}

Key generate(const Context& context, ALG_ID id, DWORD flags) {
    const Algorithm& own = *context.algorithm;
    const bool isExportable = (flags & CRYPT_EXPORTABLE) != 0;
    if (id == cipherId)
        return keyWith(&Key::session, {randomBytes(sessionKeySize), own.substitution}, isExportable);
    // A pair for one agreement is in no container.
    Key key = keyWith(&Key::pair, makeKeyPair(own, own.curve), isExportable);
    if (id == AT_KEYEXCHANGE || id == AT_SIGNATURE)
        storeKey(context, id, key);
    else if (id != own.ephemeralId)
        fail(NTE_BAD_ALGID);
    return key;
}

Key import(const Context& context, View bytes, HCRYPTKEY with, DWORD flags) {
    const auto& head = *reinterpret_cast<const BLOBHEADER*>(bytes.data());
    const View content = bytes.subspan(sizeof head);
    const bool isExportable = (flags & CRYPT_EXPORTABLE) != 0;
    if (head.bType == SIMPLEBLOB)
        return keyWith(&Key::session, receive(content, objectOf<Key>(with).pair), isExportable);
    const bool isPublic = head.bType == PUBLICKEYBLOB;
    KeyPair pair =
        isPublic ? readPublicKeyInfo(content) : readPrivateKeyInfo(underAgreed(with, content, false));
    if (pair.algorithm != context.algorithm)
        fail(NTE_BAD_ALGID);
    if (isPublic && with)
        return keyWith(&Key::session, agreeOn(objectOf<Key>(with).pair, pair), false);
    Key key = keyWith(&Key::pair, std::move(pair), isExportable);
    if (!isPublic)
        storeKey(context, AT_KEYEXCHANGE, key);
    return key;
}

// Blobs of this provider are a header and the DER of what the type is: a SubjectPublicKeyInfo, a
// PrivateKeyInfo, or a GostR3410-KeyTransport.
Bytes exportKey(const Key& key, HCRYPTKEY with, DWORD type) {
    if (type == SIMPLEBLOB)
        return keyBlob(SIMPLEBLOB, cipherId, transport(key.session, objectOf<Key>(with).pair));
    const ALG_ID id = key.pair.algorithm->keyId;
    if (type == PUBLICKEYBLOB)
        return keyBlob(PUBLICKEYBLOB, id, publicKeyInfo(key.pair));
    if (!key.isExportable)
        fail(NTE_BAD_KEY_STATE);
    return keyBlob(PRIVATEKEYBLOB, id, underAgreed(with, privateKeyInfo(key.pair), true));
}

Bytes parameter(const Key& key, DWORD which) {
    const std::string& name = key.session.substitution;
    if (which == substitutionParameter)
        return {name.c_str(), name.c_str() + name.size() + 1};
    return bytesOf(viewOfStructure(which == KP_ALGID ? key.pair.algorithm->keyId : ALG_ID{8 * blockSize}));
}

void setParameter(const Context& context, Key& key, DWORD which, const BYTE* value) {
    if (which == KP_IV)
        key.iv.assign(value, value + blockSize);
    else if (which == substitutionParameter)
        key.session.substitution = reinterpret_cast<const char*>(value);
    else
        key.wrapsKeys = *reinterpret_cast<const ALG_ID*>(value) == context.algorithm->keyWrapId;
}

// The cipher feeds back its output, so that nothing is padded; the last piece puts it back to its start.
void crypt(Key& key, bool isEncryption, bool isFinal, BYTE* data, DWORD size) {
    if (!key.running)
        key.running =
            openCipher(key.session.substitution, GCRY_CIPHER_MODE_CFB, true, key.session.key, key.iv);
    if (size > 0 && (isEncryption ? ::gcry_cipher_encrypt : ::gcry_cipher_decrypt)(key.running.get(), data,
                                                                                   size, nullptr, 0))
        fail(NTE_FAIL);
    if (isFinal)
        key.running.reset();
}

HCRYPTHASH create(const Algorithm* algorithm, ALG_ID id) {
    Hash hash;
    hash.algorithm = algorithm;
    gcry_md_hd_t running = nullptr;
    if (id != algorithm->hashId || ::gcry_md_open(&running, algorithm->digest, 0))
        fail(NTE_BAD_ALGID);
    hash.running.reset(running);
    return handleOf(std::move(hash));
}

}  // namespace
}  // namespace Corvane::Platform::Gost

using namespace Corvane::Platform;
using namespace Corvane::Platform::Gost;

extern "C" {

BOOL WINAPI CPGenKey(HCRYPTPROV context, ALG_ID id, DWORD flags, HCRYPTKEY* key) {
    return entry([&] { *key = handleOf(generate(objectOf<Context>(context), id, flags)); });
}

BOOL WINAPI CPGetUserKey(HCRYPTPROV context, DWORD spec, HCRYPTKEY* key) {
    return entry([&] { *key = handleOf(loadKey(objectOf<Context>(context), spec)); });
}

BOOL WINAPI CPDestroyKey(HCRYPTPROV, HCRYPTKEY key) {
    return entry([&] { delete &objectOf<Key>(key); });
}

BOOL WINAPI CPImportKey(HCRYPTPROV context, const BYTE* data, DWORD size, HCRYPTKEY with, DWORD flags,
                        HCRYPTKEY* key) {
    return entry([&] { *key = handleOf(import(objectOf<Context>(context), View(data, size), with, flags)); });
}

BOOL WINAPI CPExportKey(HCRYPTPROV, HCRYPTKEY key, HCRYPTKEY with, DWORD type, DWORD, BYTE* buffer,
                        DWORD* size) {
    return entry([&] { give(buffer, size, exportKey(objectOf<Key>(key), with, type)); });
}

BOOL WINAPI CPGetKeyParam(HCRYPTPROV, HCRYPTKEY key, DWORD which, BYTE* buffer, DWORD* size, DWORD) {
    return entry([&] { give(buffer, size, parameter(objectOf<Key>(key), which)); });
}

BOOL WINAPI CPSetKeyParam(HCRYPTPROV context, HCRYPTKEY key, DWORD which, BYTE* value, DWORD) {
    return entry([&] { setParameter(objectOf<Context>(context), objectOf<Key>(key), which, value); });
}

// NOLINTBEGIN(readability-non-const-parameter): the system's declarations
BOOL WINAPI CPEncrypt(HCRYPTPROV, HCRYPTKEY key, HCRYPTHASH, BOOL isFinal, DWORD, BYTE* data, DWORD* size,
                      DWORD) {
    return entry([&] { crypt(objectOf<Key>(key), true, isFinal, data, *size); });
}

BOOL WINAPI CPDecrypt(HCRYPTPROV, HCRYPTKEY key, HCRYPTHASH, BOOL isFinal, DWORD, BYTE* data, DWORD* size) {
    return entry([&] { crypt(objectOf<Key>(key), false, isFinal, data, *size); });
}
// NOLINTEND(readability-non-const-parameter)

BOOL WINAPI CPCreateHash(HCRYPTPROV context, ALG_ID id, HCRYPTKEY, DWORD, HCRYPTHASH* hash) {
    return entry([&] { *hash = create(objectOf<Context>(context).algorithm, id); });
}

BOOL WINAPI CPHashData(HCRYPTPROV, HCRYPTHASH handle, const BYTE* data, DWORD size, DWORD) {
    return entry([&] { ::gcry_md_write(objectOf<Hash>(handle).running.get(), data, size); });
}

BOOL WINAPI CPDestroyHash(HCRYPTPROV, HCRYPTHASH hash) {
    return entry([&] { delete &objectOf<Hash>(hash); });
}

BOOL WINAPI CPGetHashParam(HCRYPTPROV, HCRYPTHASH hash, DWORD, BYTE* buffer, DWORD* size, DWORD) {
    return entry([&] { give(buffer, size, objectOf<Hash>(hash).finish()); });
}

BOOL WINAPI CPSetHashParam(HCRYPTPROV, HCRYPTHASH handle, DWORD, BYTE* value, DWORD) {
    return entry([&] {
        Hash& hash = objectOf<Hash>(handle);
        hash.value.assign(value, value + hash.algorithm->size);
    });
}

BOOL WINAPI CPSignHash(HCRYPTPROV context, HCRYPTHASH hash, DWORD spec, LPCWSTR, DWORD, BYTE* buffer,
                       DWORD* size) {
    return entry([&] {
        const KeyPair key = loadKey(objectOf<Context>(context), spec).pair;
        if (!buffer)
            return give(buffer, size, key.publicHalf);  // as long as a signature
        give(buffer, size, reversed(sign(key.curve, key.secret, objectOf<Hash>(hash).finish())));
    });
}

BOOL WINAPI CPVerifySignature(HCRYPTPROV, HCRYPTHASH hash, const BYTE* signature, DWORD size, HCRYPTKEY key,
                              LPCWSTR, DWORD) {
    return entry([&] {
        const KeyPair& pair = objectOf<Key>(key).pair;
        const Bytes& digest = objectOf<Hash>(hash).finish();
        if (pair.algorithm != objectOf<Hash>(hash).algorithm)
            fail(NTE_BAD_KEY);
        if (!verify(pair.curve, pair.publicHalf, digest, reversed(View(signature, size))))
            fail(NTE_BAD_SIGNATURE);
    });
}

}  // extern "C"
