// Acquiring the provider, its parameters, and its containers, which live in the registry of the current user,
// so that both bitnesses see the same ones. The keys lie there in the open: they are made for tests.
#include "core/handles.h"
#include "provider.h"

namespace Corvane::Platform::Gost {
namespace {

const std::string root = R"(Software\Corvane Tests\GOST containers\)";
constexpr std::string_view unique = R"(\\.\REGISTRY\)";

std::string keyName(DWORD spec) {
    return "key " + std::to_string(spec);
}

// A value is whether the key is exportable, and its PrivateKeyInfo.
std::optional<Key> readKey(const std::string& container, DWORD spec) {
    BYTE value[1024];
    DWORD size = sizeof value;
    if (::RegGetValueA(HKEY_CURRENT_USER, (root + container).c_str(), keyName(spec).c_str(),
                       RRF_RT_REG_BINARY, nullptr, value, &size))
        return std::nullopt;
    return keyWith(&Key::pair, readPrivateKeyInfo({value + 1, size - 1}), value[0] != 0);
}

std::string openContainer(std::string name, DWORD flags) {
    if (name.starts_with(unique))
        name.erase(0, unique.size());
    RegistryKey key;
    const std::string path = root + name;
    const bool isThere = ::RegOpenKeyA(HKEY_CURRENT_USER, path.c_str(), key.put()) == ERROR_SUCCESS;
    if (isThere == ((flags & CRYPT_NEWKEYSET) != 0))
        fail(isThere ? NTE_EXISTS : NTE_BAD_KEYSET);
    if (!isThere)
        ::RegCreateKeyA(HKEY_CURRENT_USER, path.c_str(), key.put());
    return name;
}

// The part of VTableProvStruc (cspdk.h) that is read here.
struct ProviderCallbacks {
    DWORD version;
    void* functions[2];
    DWORD providerType;
};

void acquire(HCRYPTPROV* handle, const char* name, DWORD flags, DWORD type) {
    startArithmetic();
    Context context;
    context.algorithm = findAlgorithm(type, &Algorithm::providerType);
    if ((flags & CRYPT_VERIFYCONTEXT) != CRYPT_VERIFYCONTEXT)
        context.container = openContainer(name ? name : "", flags);
    if (flags & CRYPT_DELETEKEYSET)
        ::RegDeleteKeyA(HKEY_CURRENT_USER, (root + *context.container).c_str());
    else
        *handle = handleOf(std::move(context));
}

// With the NUL, as the provider's parameters are told.
Bytes told(const std::string& text) {
    return {text.c_str(), text.c_str() + text.size() + 1};
}

// The names of containers whose keys are of the provider's kind, and of empty ones.
std::vector<Bytes> containersOf(const Algorithm& own) {
    std::vector<Bytes> list;
    RegistryKey key;
    char name[MAX_PATH];
    ::RegOpenKeyA(HKEY_CURRENT_USER, root.c_str(), key.put());
    for (DWORD i = 0; !::RegEnumKeyA(key.get(), i, name, MAX_PATH); ++i) {
        const auto found = readKey(name, AT_KEYEXCHANGE);
        if (!found || found->pair.algorithm == &own)
            list.push_back(told(name));
    }
    return list;
}

// The system looks for a provider for an algorithm here.
std::vector<Bytes> algorithmsOf(const Algorithm& own) {
    std::vector<Bytes> list;
    for (const ALG_ID id : {own.hashId, own.keyId, cipherId})
        list.push_back(bytesOf(viewOfStructure(PROV_ENUMALGS{id, 0, 1, {}})));
    return list;
}

void getParameter(Context& context, DWORD which, BYTE* buffer, DWORD* size, DWORD flags) {
    const std::wstring_view name = context.algorithm->provider;
    if (which == PP_NAME)
        return give(buffer, size, told({name.begin(), name.end()}));
    if (which == PP_UNIQUE_CONTAINER)
        return give(buffer, size, told(std::string(unique) + context.container.value()));
    if (which != PP_ENUMCONTAINERS && which != PP_ENUMALGS)
        fail(NTE_BAD_TYPE);
    if (flags & CRYPT_FIRST)
        context.listed = (which == PP_ENUMALGS ? algorithmsOf : containersOf)(*context.algorithm);
    if (context.listed.empty())
        fail(ERROR_NO_MORE_ITEMS);
    give(buffer, size, buffer ? context.listed.front() : Bytes(MAX_PATH));  // as long as any
    if (buffer)
        context.listed.erase(context.listed.begin());
}

}  // namespace

Key loadKey(const Context& context, DWORD spec) {
    auto key = context.container ? readKey(*context.container, spec) : std::nullopt;
    if (!key || key->pair.algorithm != context.algorithm)
        fail(NTE_NO_KEY);
    return std::move(*key);
}

void storeKey(const Context& context, DWORD spec, const Key& key) {
    Bytes value{key.isExportable};
    append(value, privateKeyInfo(key.pair));
    if (::RegSetKeyValueA(HKEY_CURRENT_USER, (root + *context.container).c_str(), keyName(spec).c_str(),
                          REG_BINARY, value.data(), lengthOf(value)))
        fail(NTE_FAIL);
}

}  // namespace Corvane::Platform::Gost

using namespace Corvane::Platform;
using namespace Corvane::Platform::Gost;

extern "C" {

BOOL WINAPI CPAcquireContext(HCRYPTPROV* handle, LPSTR container, DWORD flags, ProviderCallbacks* callbacks) {
    return entry([&] { acquire(handle, container, flags, callbacks->providerType); });
}

BOOL WINAPI CPReleaseContext(HCRYPTPROV context, DWORD) {
    return entry([&] { delete &objectOf<Context>(context); });
}

BOOL WINAPI CPGetProvParam(HCRYPTPROV context, DWORD which, BYTE* buffer, DWORD* size, DWORD flags) {
    return entry([&] { getParameter(objectOf<Context>(context), which, buffer, size, flags); });
}

BOOL WINAPI CPGenRandom(HCRYPTPROV, DWORD size, BYTE* buffer) {
    return entry([&] { std::ranges::copy(randomBytes(size), buffer); });
}

// What the system wants to find, and nobody calls.
// NOLINTNEXTLINE(readability-identifier-naming, readability-isolate-declaration): the system's names
DWORD CPDeriveKey, CPHashSessionKey, CPSetProvParam;

}  // extern "C"
