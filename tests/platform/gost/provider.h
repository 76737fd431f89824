// What the provider's handles stand for, and what its containers hold.
#pragma once

#include "key_pair.h"

#include <memory>
#include <optional>
#include <vector>

namespace Corvane::Platform::Gost {

struct Context {
    const Algorithm* algorithm = nullptr;
    std::optional<std::string> container;  // none with CRYPT_VERIFYCONTEXT
    std::vector<Bytes> listed;             // what the enumeration that runs has left
};

struct Key {
    KeyPair pair;  // of a key pair or a public key; without an algorithm: a session key
    bool isExportable = false;
    SessionKey session;
    bool wrapsKeys = false;  // private keys may be exported under it
    Bytes iv = Bytes(8);
    Cipher running;  // null before the first and after the last block
};

template <class Value>
Key keyWith(Value Key::*member, Value value, bool isExportable) {
    Key key;
    key.*member = std::move(value);
    key.isExportable = isExportable;
    return key;
}

struct Hash {
    const Bytes& finish() {
        if (value.empty()) {
            const unsigned char* digest = ::gcry_md_read(running.get(), 0);
            value.assign(digest, digest + algorithm->size);
        }
        return value;
    }

    const Algorithm* algorithm = nullptr;
    std::unique_ptr<gcry_md_handle, Release<::gcry_md_close>> running;
    Bytes value;  // once it was asked for or set
};

// They are given out as their addresses.
template <class Object>
Object& objectOf(ULONG_PTR handle) {
    return *reinterpret_cast<Object*>(handle);
}
template <class Object>
ULONG_PTR handleOf(Object object) {
    return reinterpret_cast<ULONG_PTR>(std::make_unique<Object>(std::move(object)).release());
}

// The container's key. Fails with NTE_NO_KEY where there is none.
Key loadKey(const Context& context, DWORD spec);
void storeKey(const Context& context, DWORD spec, const Key& key);

}  // namespace Corvane::Platform::Gost
