// What the provider's handles stand for.
#pragma once

#include "arithmetic.h"
#include "containers.h"

#include <map>
#include <mutex>

namespace Corvane::Platform::Gost {

struct Context {
    const Algorithm* algorithm = nullptr;
    std::wstring container;  // empty: none, as with CRYPT_VERIFYCONTEXT
    bool hasContainer = false;
    std::size_t enumerated = 0;
};

struct Key {
    KeyPair pair;    // of a key pair or a public key; without an algorithm: a session key
    DWORD spec = 0;  // of a key of the container
    bool exportable = false;
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

// The open handles of one kind; a number that is none of them is refused.
template <class Object, LONG unknown>
class Handles {
public:
    ULONG_PTR add(std::unique_ptr<Object> object) {
        const std::lock_guard lock(mutex_);
        const auto handle = reinterpret_cast<ULONG_PTR>(object.get());
        objects_[handle] = std::move(object);
        return handle;
    }
    Object& get(ULONG_PTR handle) {
        const std::lock_guard lock(mutex_);
        const auto found = objects_.find(handle);
        return found != objects_.end() ? *found->second : (fail(unknown), *found->second);
    }
    void remove(ULONG_PTR handle) {
        const std::lock_guard lock(mutex_);
        if (objects_.erase(handle) == 0)
            fail(unknown);
    }

private:
    std::mutex mutex_;
    std::map<ULONG_PTR, std::unique_ptr<Object>> objects_;
};

extern Handles<Context, NTE_BAD_UID> contexts;
extern Handles<Key, NTE_BAD_KEY> keys;
extern Handles<Hash, NTE_BAD_HASH> hashes;

}  // namespace Corvane::Platform::Gost
