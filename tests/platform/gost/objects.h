// What the provider's handles stand for, and what its containers hold.
#pragma once

#include "../handles.h"
#include "arithmetic.h"
#include "key_pair.h"

#include <optional>
#include <vector>

namespace Corvane::Platform::Gost {

struct Context {
    const Algorithm* algorithm = nullptr;
    std::optional<std::wstring> container;  // none with CRYPT_VERIFYCONTEXT
    std::vector<Bytes> listed;              // by the enumeration that runs
    std::size_t next = 0;
};

struct Key {
    KeyPair pair;  // of a key pair or a public key; without an algorithm: a session key
    bool isExportable = false;
    SessionKey session;
    bool isAgreed = false;   // the session is one that two pairs agree on
    bool wrapsKeys = false;  // and private keys may be exported under it
    Bytes iv;
    Cipher running;  // null before the first and after the last block

    bool isSession() const { return pair.algorithm == nullptr; }
};

struct CloseHash {
    void operator()(gcry_md_hd_t hash) const { ::gcry_md_close(hash); }
};

struct Hash {
    const Algorithm* algorithm = nullptr;
    std::unique_ptr<gcry_md_handle, CloseHash> running;
    Bytes value;  // once it was asked for or set

    const Bytes& finish();
};

// The open ones; a number that is none of them is refused.
extern Handles<Context> contexts;
extern Handles<Key> keys;
extern Handles<Hash> hashes;

inline Context& contextOf(HCRYPTPROV handle) {
    Context* const context = contexts.find(handle);
    return context ? *context : (fail(NTE_BAD_UID), *context);
}
inline Key& keyOf(HCRYPTKEY handle) {
    Key* const key = keys.find(handle);
    return key ? *key : (fail(NTE_BAD_KEY), *key);
}
inline Hash& hashOf(HCRYPTHASH handle) {
    Hash* const hash = hashes.find(handle);
    return hash ? *hash : (fail(NTE_BAD_HASH), *hash);
}

// Containers live in the registry of the current user, so that both bitnesses see the same ones. The keys lie
// there in the open: they are made for tests. `spec` is AT_KEYEXCHANGE or AT_SIGNATURE.
bool containerExists(const std::wstring& name);
void createContainer(const std::wstring& name);
void deleteContainer(const std::wstring& name);
std::vector<std::wstring> containerNames();
// Fails with NTE_NO_KEY where there is none.
std::unique_ptr<Key> loadKey(const Context& context, DWORD spec);
void storeKey(const Context& context, DWORD spec, const Key& key);
// Null where there is none.
const Algorithm* algorithmOf(const std::wstring& container);

// Gives a result as CryptoAPI does: the size where no buffer is given, ERROR_MORE_DATA where it is too small.
void give(BYTE* buffer, DWORD* size, View result);
inline void expectNone(DWORD flags) {
    if (flags)
        fail(NTE_BAD_FLAGS);
}

}  // namespace Corvane::Platform::Gost
