// Keys: making, finding, importing, exporting, and encrypting with them.
#include "objects.h"

#include <algorithm>
#include <cstring>

namespace Corvane::Platform::Gost {
namespace {

constexpr std::size_t blockSize = 8, sessionKeySize = 32;

// Blobs of this provider are a header and the DER of what the type is: a SubjectPublicKeyInfo, a
// PrivateKeyInfo, or a GostR3410-KeyTransport.
Bytes blob(BYTE type, ALG_ID algorithm, View der) {
    const BLOBHEADER head{type, CUR_BLOB_VERSION, 0, algorithm};
    Bytes bytes(sizeof head);
    std::memcpy(bytes.data(), &head, sizeof head);
    return append(bytes, der);
}

const std::wstring& containerOf(const Context& context) {
    if (!context.hasContainer)
        fail(NTE_PERM);
    return context.container;
}

DWORD specOf(const Context& context, ALG_ID id) {
    if (id == AT_KEYEXCHANGE || id == AT_SIGNATURE)
        return id;
    if (id == context.algorithm->keyId)
        return AT_KEYEXCHANGE;
    fail(NTE_BAD_ALGID);
}

HCRYPTKEY addStored(const StoredKey& stored, DWORD spec) {
    auto key = std::make_unique<Key>();
    key->pair = stored.pair;
    key->spec = spec;
    key->exportable = stored.exportable;
    return keys.add(std::move(key));
}

HCRYPTKEY addSession(SessionKey session, bool exportable) {
    auto key = std::make_unique<Key>();
    key->session = std::move(session);
    key->iv = randomBytes(blockSize);
    key->exportable = exportable;
    return keys.add(std::move(key));
}

// A pair that no container keeps.
HCRYPTKEY addEphemeral(const Algorithm& algorithm) {
    auto key = std::make_unique<Key>();
    key->pair = makeKeyPair(algorithm, algorithm.curve);
    key->exportable = true;
    return keys.add(std::move(key));
}

HCRYPTKEY addAgreed(const KeyPair& own, const KeyPair& other) {
    auto key = std::make_unique<Key>();
    key->session = agreeOn(own, other);
    key->isAgreed = true;
    return keys.add(std::move(key));
}

// A private key under an agreed one, in the one direction or the other.
Bytes crypted(const Key& agreed, View der, bool encrypt) {
    if (!agreed.wrapsKeys)
        fail(NTE_BAD_KEY);
    Bytes bytes(der.begin(), der.end());
    const Cipher cipher = openCipher(agreed.session.substitution, GCRY_CIPHER_MODE_CFB, false,
                                     agreed.session.key, Bytes(blockSize));
    if ((encrypt ? ::gcry_cipher_encrypt : ::gcry_cipher_decrypt)(cipher.get(), bytes.data(), bytes.size(),
                                                                  nullptr, 0))
        fail(NTE_FAIL);
    return bytes;
}

HCRYPTKEY generate(const Context& context, ALG_ID id, DWORD flags) {
    constexpr DWORD known = CRYPT_EXPORTABLE | CRYPT_USER_PROTECTED | CRYPT_ARCHIVABLE;
    if (flags & 0xFFFF & ~known)
        fail(NTE_BAD_FLAGS);
    const bool exportable = (flags & CRYPT_EXPORTABLE) != 0;
    if (id == cipherId)
        return addSession({randomBytes(sessionKeySize), context.algorithm->substitution}, exportable);
    if (id == context.algorithm->ephemeralId)
        return addEphemeral(*context.algorithm);
    const DWORD spec = specOf(context, id);
    const std::wstring& container = containerOf(context);
    const StoredKey stored{makeKeyPair(*context.algorithm, context.algorithm->curve), exportable};
    storeKey(container, spec, stored);
    return addStored(stored, spec);
}

StoredKey userKey(const Context& context, DWORD spec) {
    if (spec != AT_KEYEXCHANGE && spec != AT_SIGNATURE)
        fail(NTE_BAD_KEY);
    auto stored = context.hasContainer ? loadKey(context.container, spec) : std::nullopt;
    if (!stored || stored->pair.algorithm != context.algorithm)
        fail(NTE_NO_KEY);
    return *stored;
}

HCRYPTKEY importPublic(const Context& context, View der, HCRYPTKEY with) {
    auto key = std::make_unique<Key>();
    key->pair = readPublicKeyInfo(der);
    if (key->pair.algorithm != context.algorithm)
        fail(NTE_BAD_ALGID);
    if (with && keys.get(with).pair.secret.empty())
        fail(NTE_BAD_KEY);
    if (with)
        return addAgreed(keys.get(with).pair, key->pair);
    key->exportable = true;
    return keys.add(std::move(key));
}

HCRYPTKEY importPrivate(const Context& context, View der, DWORD flags) {
    const StoredKey stored{readPrivateKeyInfo(der), (flags & CRYPT_EXPORTABLE) != 0};
    if (stored.pair.algorithm != context.algorithm)
        fail(NTE_BAD_ALGID);
    storeKey(containerOf(context), AT_KEYEXCHANGE, stored);
    return addStored(stored, AT_KEYEXCHANGE);
}

HCRYPTKEY import(const Context& context, View bytes, HCRYPTKEY with, DWORD flags) {
    BLOBHEADER head{};
    if (bytes.size() < sizeof head)
        fail(NTE_BAD_DATA);
    std::memcpy(&head, bytes.data(), sizeof head);
    const View der = bytes.subspan(sizeof head);
    if (head.bVersion != CUR_BLOB_VERSION)
        fail(NTE_BAD_VER);
    if (head.bType == PUBLICKEYBLOB)
        return importPublic(context, der, with);
    if (head.bType == PRIVATEKEYBLOB)
        return with ? importPrivate(context, crypted(keys.get(with), der, false), flags)
                    : importPrivate(context, der, flags);
    if (head.bType != SIMPLEBLOB)
        fail(NTE_BAD_TYPE);
    const KeyPair pair = with ? keys.get(with).pair : userKey(context, AT_KEYEXCHANGE).pair;
    if (pair.secret.empty())
        fail(NTE_BAD_KEY);
    return addSession(receive(der, pair), (flags & CRYPT_EXPORTABLE) != 0);
}

Bytes exportKey(const Key& key, HCRYPTKEY with, DWORD type) {
    if (type == SIMPLEBLOB) {
        if (!key.isSession() || keys.get(with).isSession())
            fail(NTE_BAD_KEY);
        return blob(SIMPLEBLOB, cipherId, transport(key.session, keys.get(with).pair));
    }
    if (with && type != PRIVATEKEYBLOB)
        fail(NTE_BAD_KEY);
    if (key.isSession() || (type != PUBLICKEYBLOB && type != PRIVATEKEYBLOB))
        fail(NTE_BAD_TYPE);
    const ALG_ID id = key.pair.algorithm->keyId;
    if (type == PUBLICKEYBLOB)
        return blob(PUBLICKEYBLOB, id, publicKeyInfo(key.pair));
    if (key.pair.secret.empty() || !key.exportable)
        fail(NTE_BAD_KEY_STATE);
    const Bytes der = privateKeyInfo(key.pair);
    return blob(PRIVATEKEYBLOB, id, with ? crypted(keys.get(with), der, true) : der);
}

Bytes numberParameter(const Key& key, DWORD which) {
    DWORD number = 0;
    if (which == KP_ALGID)
        number = key.isSession() ? cipherId : key.pair.algorithm->keyId;
    else if (which == KP_KEYLEN)
        number = static_cast<DWORD>(8 * (key.isSession() ? sessionKeySize : 2 * key.pair.algorithm->size));
    else if (which == KP_BLOCKLEN)
        number = key.isSession() ? 8 * blockSize : 0;
    else if (which == KP_MODE && key.isSession())
        number = CRYPT_MODE_CFB;
    else
        fail(NTE_BAD_TYPE);
    const View bytes = bytesOf(number);
    return {bytes.begin(), bytes.end()};
}

Bytes parameter(const Key& key, DWORD which) {
    if (which == KP_IV && key.isSession())
        return key.iv;
    if (which == substitutionParameter && key.isSession()) {
        const std::string& name = key.session.substitution;
        return {name.c_str(), name.c_str() + name.size() + 1};
    }
    return numberParameter(key, which);
}

void setParameter(const Context& context, Key& key, DWORD which, const BYTE* value) {
    if (which == KP_IV && key.isSession()) {
        key.iv.assign(value, value + blockSize);
        key.running.reset();
    } else if (which == substitutionParameter && key.isSession()) {
        key.session.substitution = reinterpret_cast<const char*>(value);
    } else if (which == KP_ALGID && key.isAgreed) {
        ALG_ID id = 0;
        std::memcpy(&id, value, sizeof id);
        key.wrapsKeys = id == context.algorithm->keyWrapId ? true : (fail(NTE_BAD_ALGID), false);
    } else {
        fail(NTE_BAD_TYPE);
    }
}

// The cipher feeds back its output, so that nothing is padded; the last piece puts it back to its start.
void crypt(Key& key, bool encrypt, bool isFinal, BYTE* data, DWORD size) {
    if (!key.isSession())
        fail(NTE_BAD_KEY);
    if (!key.running)
        key.running =
            openCipher(key.session.substitution, GCRY_CIPHER_MODE_CFB, true, key.session.key, key.iv);
    if (!key.running)
        fail(NTE_BAD_ALGID);
    if (size > 0 &&
        (encrypt ? ::gcry_cipher_encrypt : ::gcry_cipher_decrypt)(key.running.get(), data, size, nullptr, 0))
        fail(NTE_FAIL);
    if (isFinal)
        key.running.reset();
}

}  // namespace
}  // namespace Corvane::Platform::Gost

using namespace Corvane::Platform;
using namespace Corvane::Platform::Gost;

extern "C" {

BOOL WINAPI CPHashData(HCRYPTPROV, HCRYPTHASH, const BYTE*, DWORD, DWORD);

BOOL WINAPI CPGenKey(HCRYPTPROV context, ALG_ID id, DWORD flags, HCRYPTKEY* key) {
    return entry([&] { *key = generate(contexts.get(context), id, flags); });
}

BOOL WINAPI CPGetUserKey(HCRYPTPROV context, DWORD spec, HCRYPTKEY* key) {
    return entry([&] { *key = addStored(userKey(contexts.get(context), spec), spec); });
}

BOOL WINAPI CPDestroyKey(HCRYPTPROV, HCRYPTKEY key) {
    return entry([&] { keys.remove(key); });
}

BOOL WINAPI CPImportKey(HCRYPTPROV context, const BYTE* data, DWORD size, HCRYPTKEY with, DWORD flags,
                        HCRYPTKEY* key) {
    return entry([&] { *key = import(contexts.get(context), View(data, size), with, flags); });
}

BOOL WINAPI CPExportKey(HCRYPTPROV, HCRYPTKEY key, HCRYPTKEY with, DWORD type, DWORD flags, BYTE* buffer,
                        DWORD* size) {
    return entry(
        [&] { flags ? fail(NTE_BAD_FLAGS) : give(buffer, size, exportKey(keys.get(key), with, type)); });
}

BOOL WINAPI CPGetKeyParam(HCRYPTPROV, HCRYPTKEY key, DWORD which, BYTE* buffer, DWORD* size, DWORD) {
    return entry([&] { give(buffer, size, parameter(keys.get(key), which)); });
}

BOOL WINAPI CPSetKeyParam(HCRYPTPROV context, HCRYPTKEY key, DWORD which, BYTE* value, DWORD) {
    return entry([&] { setParameter(contexts.get(context), keys.get(key), which, value); });
}

BOOL WINAPI CPDuplicateKey(HCRYPTPROV, HCRYPTKEY, DWORD*, DWORD, HCRYPTKEY*) {
    return entry([] { fail(E_NOTIMPL); });
}

BOOL WINAPI CPDeriveKey(HCRYPTPROV, ALG_ID, HCRYPTHASH, DWORD, HCRYPTKEY*) {
    return entry([] { fail(E_NOTIMPL); });
}

// NOLINTBEGIN(readability-non-const-parameter): the system's declarations
BOOL WINAPI CPEncrypt(HCRYPTPROV context, HCRYPTKEY key, HCRYPTHASH hash, BOOL isFinal, DWORD flags,
                      BYTE* data, DWORD* size, DWORD room) {
    return entry([&] {
        if (flags)
            fail(NTE_BAD_FLAGS);
        if (!data)
            return;  // the size stays as it is
        if (room < *size)
            fail(ERROR_MORE_DATA);
        if (hash && !CPHashData(context, hash, data, *size, 0))
            fail(static_cast<LONG>(::GetLastError()));
        crypt(keys.get(key), true, isFinal, data, *size);
    });
}

BOOL WINAPI CPDecrypt(HCRYPTPROV context, HCRYPTKEY key, HCRYPTHASH hash, BOOL isFinal, DWORD flags,
                      BYTE* data, DWORD* size) {
    return entry([&] {
        if (flags)
            fail(NTE_BAD_FLAGS);
        crypt(keys.get(key), false, isFinal, data, *size);
        if (hash && !CPHashData(context, hash, data, *size, 0))
            fail(static_cast<LONG>(::GetLastError()));
    });
}
// NOLINTEND(readability-non-const-parameter)

}  // extern "C"
