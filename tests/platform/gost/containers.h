// Key containers, which live in the registry of the current user, so that both bitnesses see the same ones.
// The keys lie there in the open: they are made for tests.
#pragma once

#include "key_pair.h"

#include <optional>

namespace Corvane::Platform::Gost {

struct StoredKey {
    KeyPair pair;
    bool exportable = false;
};

bool containerExists(const std::wstring& name);
void createContainer(const std::wstring& name);
void deleteContainer(const std::wstring& name);
std::vector<std::wstring> containerNames();

// `spec` is AT_KEYEXCHANGE or AT_SIGNATURE.
std::optional<StoredKey> loadKey(const std::wstring& container, DWORD spec);
void storeKey(const std::wstring& container, DWORD spec, const StoredKey& key);

}  // namespace Corvane::Platform::Gost
