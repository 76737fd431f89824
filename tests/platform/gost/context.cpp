// Acquiring the provider, its parameters, and its containers, which live in the registry of the current user,
// so that both bitnesses see the same ones. The keys lie there in the open: they are made for tests.
#include "core/handles.h"
#include "provider.h"

#include <algorithm>

namespace Corvane::Platform::Gost {
namespace {

const std::wstring root = L"Software\\Corvane Tests\\GOST containers\\";

std::wstring keyName(DWORD spec) {
    return L"key " + std::to_wstring(spec);
}

// Empty where there is none; else whether the key is exportable, and its PrivateKeyInfo.
Bytes readKey(const std::wstring& container, DWORD spec) {
    BYTE value[1024];
    DWORD size = sizeof value;
    return ::RegGetValueW(HKEY_CURRENT_USER, (root + container).c_str(), keyName(spec).c_str(),
                          RRF_RT_REG_BINARY, nullptr, value, &size)
               ? Bytes()
               : Bytes(value, value + size);
}

// The part of VTableProvStruc (cspdk.h) that is read here.
struct ProviderCallbacks {
    DWORD version;
    void* verifyImage;
    void* returnWindow;
    DWORD providerType;
};

std::wstring wide(const char* text) {
    wchar_t result[MAX_PATH] = {};
    ::MultiByteToWideChar(CP_ACP, 0, text, -1, result, MAX_PATH);
    return result;
}

// With the NUL, as parameters of the provider are told.
Bytes narrow(const std::wstring& text) {
    char result[MAX_PATH] = {};
    const int size = ::WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, result, MAX_PATH, nullptr, nullptr);
    return {result, result + size};
}

std::wstring openContainer(const char* name, DWORD flags) {
    std::wstring container = wide(name ? name : "");
    constexpr std::wstring_view unique = L"\\\\.\\REGISTRY\\";
    if (container.starts_with(unique))
        container.erase(0, unique.size());
    RegistryKey key;
    DWORD outcome = 0;
    const bool isNew = (flags & CRYPT_NEWKEYSET) != 0;
    const std::wstring path = root + container;
    if (isNew ? ::RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_READ, nullptr,
                                  key.put(), &outcome)
              : ::RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, key.put()))
        fail(NTE_BAD_KEYSET);
    if (outcome == REG_OPENED_EXISTING_KEY)
        fail(NTE_EXISTS);
    return container;
}

void acquire(HCRYPTPROV* handle, const char* name, DWORD flags, const ProviderCallbacks& callbacks) {
    startArithmetic();
    auto context = std::make_unique<Context>();
    context->algorithm = findAlgorithm(callbacks.providerType, &Algorithm::providerType);
    if ((flags & CRYPT_VERIFYCONTEXT) != CRYPT_VERIFYCONTEXT)
        context->container = openContainer(name, flags);
    if (flags & CRYPT_DELETEKEYSET)
        ::RegDeleteKeyW(HKEY_CURRENT_USER, (root + *context->container).c_str());
    else
        *handle = handleOf(std::move(context));
}

// The names of containers whose keys are of the provider's kind, and of empty ones.
std::vector<Bytes> containersOf(const Algorithm& own) {
    std::vector<Bytes> list;
    RegistryKey key;
    wchar_t name[MAX_PATH];
    if (::RegOpenKeyExW(HKEY_CURRENT_USER, root.c_str(), 0, KEY_READ, key.put()))
        return list;
    for (DWORD i = 0; !::RegEnumKeyW(key.get(), i, name, MAX_PATH); ++i) {
        const Bytes value = readKey(name, AT_KEYEXCHANGE);
        if (value.empty() || readPrivateKeyInfo(View(value).subspan(1)).algorithm == &own)
            list.push_back(narrow(name));
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

void enumerate(Context& context, DWORD which, BYTE* buffer, DWORD* size, DWORD flags) {
    if (flags & CRYPT_FIRST) {
        context.listed = (which == PP_ENUMALGS ? algorithmsOf : containersOf)(*context.algorithm);
        context.next = 0;
    }
    if (context.next >= context.listed.size())
        fail(ERROR_NO_MORE_ITEMS);
    if (!buffer)
        return give(buffer, size, Bytes(MAX_PATH));  // as long as any
    give(buffer, size, context.listed[context.next]);
    ++context.next;
}

Bytes parameter(const Context& context, DWORD which) {
    if (which == PP_NAME)
        return narrow(context.algorithm->provider);
    return which == PP_UNIQUE_CONTAINER ? narrow(L"\\\\.\\REGISTRY\\" + context.container.value())
                                        : (fail(NTE_BAD_TYPE), Bytes());
}

}  // namespace

std::unique_ptr<Key> loadKey(const Context& context, DWORD spec) {
    const Bytes value = context.container ? readKey(*context.container, spec) : Bytes();
    if (value.empty())
        fail(NTE_NO_KEY);
    auto key = std::make_unique<Key>();
    key->pair = readPrivateKeyInfo(View(value).subspan(1));
    key->isExportable = value[0] != 0;
    return key->pair.algorithm == context.algorithm ? std::move(key) : (fail(NTE_NO_KEY), nullptr);
}

void storeKey(const Context& context, DWORD spec, const Key& key) {
    Bytes value{key.isExportable};
    append(value, privateKeyInfo(key.pair));
    if (::RegSetKeyValueW(HKEY_CURRENT_USER, (root + *context.container).c_str(), keyName(spec).c_str(),
                          REG_BINARY, value.data(), lengthOf(value)))
        fail(NTE_FAIL);
}

}  // namespace Corvane::Platform::Gost

using namespace Corvane::Platform;
using namespace Corvane::Platform::Gost;

extern "C" {

BOOL WINAPI CPAcquireContext(HCRYPTPROV* handle, LPSTR container, DWORD flags, void* callbacks) {
    return entry([&] { acquire(handle, container, flags, *static_cast<ProviderCallbacks*>(callbacks)); });
}

BOOL WINAPI CPReleaseContext(HCRYPTPROV context, DWORD) {
    return entry([&] { delete &objectOf<Context>(context); });
}

BOOL WINAPI CPGetProvParam(HCRYPTPROV handle, DWORD which, BYTE* buffer, DWORD* size, DWORD flags) {
    return entry([&] {
        auto& context = objectOf<Context>(handle);
        if (which == PP_ENUMCONTAINERS || which == PP_ENUMALGS)
            enumerate(context, which, buffer, size, flags);
        else
            give(buffer, size, parameter(context, which));
    });
}

BOOL WINAPI CPGenRandom(HCRYPTPROV, DWORD size, BYTE* buffer) {
    return entry([&] { std::ranges::copy(randomBytes(size), buffer); });
}

// What the system wants to find, and nobody calls.
// NOLINTNEXTLINE(readability-identifier-naming, readability-isolate-declaration): the system's names
DWORD CPDeriveKey, CPHashSessionKey, CPSetProvParam;

}  // extern "C"
