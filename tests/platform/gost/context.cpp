// Acquiring the provider, its parameters, and its containers.
#include "objects.h"

#include <algorithm>

namespace Corvane::Platform::Gost {

Handles<Context, NTE_BAD_UID> contexts;
Handles<Key, NTE_BAD_KEY> keys;
Handles<Hash, NTE_BAD_HASH> hashes;

namespace {

// The part of VTableProvStruc (cspdk.h) that is read here.
struct ProviderCallbacks {
    DWORD version;
    void* verifyImage;
    void* returnWindow;
    DWORD providerType;
};

std::wstring wide(const char* text) {
    const int size = ::MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
    std::wstring result(static_cast<std::size_t>(size), L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, text, -1, result.data(), size);
    result.pop_back();
    return result;
}

// With the NUL, as parameters of the provider are told.
Bytes narrow(const std::wstring& text) {
    const int size = ::WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, nullptr, 0, nullptr, nullptr);
    Bytes result(static_cast<std::size_t>(size));
    ::WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, reinterpret_cast<char*>(result.data()), size, nullptr,
                          nullptr);
    return result;
}

void openContainer(Context& context, const char* name, DWORD flags) {
    context.container = wide(name ? name : "");
    constexpr std::wstring_view unique = L"\\\\.\\REGISTRY\\";
    if (context.container.starts_with(unique))
        context.container.erase(0, unique.size());
    if (context.container.empty())
        context.container = L"default";
    const bool exists = containerExists(context.container);
    if (flags & CRYPT_NEWKEYSET) {
        if (exists)
            fail(NTE_EXISTS);
        createContainer(context.container);
    } else if (!exists) {
        fail(NTE_BAD_KEYSET);
    }
    context.hasContainer = true;
}

void acquire(HCRYPTPROV* handle, const char* name, DWORD flags, const ProviderCallbacks& callbacks) {
    startArithmetic();
    constexpr DWORD known =
        CRYPT_VERIFYCONTEXT | CRYPT_NEWKEYSET | CRYPT_DELETEKEYSET | CRYPT_MACHINE_KEYSET | CRYPT_SILENT;
    if (flags & ~known)
        fail(NTE_BAD_FLAGS);
    auto context = std::make_unique<Context>();
    context->algorithm = findByType(callbacks.providerType);
    if (!context->algorithm)
        fail(NTE_BAD_PROV_TYPE);
    if ((flags & CRYPT_VERIFYCONTEXT) == CRYPT_VERIFYCONTEXT) {
        if (name && *name)
            fail(NTE_BAD_KEYSET_PARAM);
    } else {
        openContainer(*context, name, flags);
    }
    if (flags & CRYPT_DELETEKEYSET)
        return deleteContainer(context->container);
    *handle = contexts.add(std::move(context));
}

// Containers whose keys are of the provider's kind, and empty ones.
std::vector<Bytes> ownContainers(const Context& context) {
    std::vector<Bytes> names;
    for (const std::wstring& name : containerNames()) {
        const auto key = loadKey(name, AT_KEYEXCHANGE);
        if (!key || key->pair.algorithm == context.algorithm)
            names.push_back(narrow(name));
    }
    return names;
}

// They are looked up at the first call. That without a buffer tells the size of the longest name.
void enumerateContainers(Context& context, BYTE* buffer, DWORD* size, DWORD flags) {
    if (flags & CRYPT_FIRST) {
        context.enumerated = 0;
        context.containers = ownContainers(context);
    }
    if (context.enumerated >= context.containers.size())
        fail(ERROR_NO_MORE_ITEMS);
    if (!buffer)
        return give(buffer, size, *std::ranges::max_element(context.containers, {}, [](const Bytes& name) {
                        return name.size();
                    }));
    give(buffer, size, context.containers[context.enumerated]);
    ++context.enumerated;
}

// The system looks for a provider for an algorithm in these lists.
void enumerateAlgorithms(Context& context, BYTE* buffer, DWORD* size, DWORD flags) {
    const Algorithm& own = *context.algorithm;
    struct Entry {
        ALG_ID id;
        std::size_t bytes;
        const char* name;
    };
    const Entry all[] = {{own.hashId, own.hashSize, "GOST R 34.11"},
                         {own.keyId, 2 * own.size, "GOST R 34.10"},
                         {cipherId, 32, "GOST 28147-89"}};
    if (flags & CRYPT_FIRST)
        context.enumerated = 0;
    if (context.enumerated >= std::size(all))
        fail(ERROR_NO_MORE_ITEMS);
    const Entry& entry = all[context.enumerated];
    const auto bits = static_cast<DWORD>(8 * entry.bytes);
    const auto nameSize = static_cast<DWORD>(std::char_traits<char>::length(entry.name) + 1);
    PROV_ENUMALGS filled{entry.id, bits, nameSize, {}};
    std::copy_n(entry.name, nameSize, filled.szName);
    give(buffer, size, {reinterpret_cast<const std::uint8_t*>(&filled), sizeof filled});
    if (buffer)
        ++context.enumerated;
}

Bytes parameter(const Context& context, DWORD which) {
    if (which == PP_NAME)
        return narrow(context.algorithm->provider);
    if (which == PP_PROVTYPE) {
        const View type = bytesOf(context.algorithm->providerType);
        return {type.begin(), type.end()};
    }
    if (which != PP_CONTAINER && which != PP_UNIQUE_CONTAINER)
        fail(NTE_BAD_TYPE);
    if (!context.hasContainer)
        fail(NTE_BAD_KEYSET);
    return narrow((which == PP_CONTAINER ? L"" : L"\\\\.\\REGISTRY\\") + context.container);
}

}  // namespace
}  // namespace Corvane::Platform::Gost

using namespace Corvane::Platform;
using namespace Corvane::Platform::Gost;

extern "C" {

BOOL WINAPI CPAcquireContext(HCRYPTPROV* handle, LPSTR container, DWORD flags, void* callbacks) {
    return entry([&] { acquire(handle, container, flags, *static_cast<ProviderCallbacks*>(callbacks)); });
}

BOOL WINAPI CPReleaseContext(HCRYPTPROV context, DWORD flags) {
    return entry([&] { flags ? fail(NTE_BAD_FLAGS) : contexts.remove(context); });
}

BOOL WINAPI CPGetProvParam(HCRYPTPROV handle, DWORD which, BYTE* buffer, DWORD* size, DWORD flags) {
    return entry([&] {
        Context& context = contexts.get(handle);
        if (which == PP_ENUMCONTAINERS)
            enumerateContainers(context, buffer, size, flags);
        else if (which == PP_ENUMALGS)
            enumerateAlgorithms(context, buffer, size, flags);
        else
            give(buffer, size, parameter(context, which));
    });
}

BOOL WINAPI CPSetProvParam(HCRYPTPROV, DWORD, BYTE*, DWORD) {
    return entry([] { fail(E_NOTIMPL); });
}

BOOL WINAPI CPGenRandom(HCRYPTPROV, DWORD, BYTE*) {
    return entry([] { fail(E_NOTIMPL); });
}

}  // extern "C"
