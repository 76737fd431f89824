#include "core/handles.h"
#include "objects.h"

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

}  // namespace

bool containerExists(const std::wstring& name) {
    RegistryKey key;
    return !::RegOpenKeyExW(HKEY_CURRENT_USER, (root + name).c_str(), 0, KEY_READ, key.put());
}

void createContainer(const std::wstring& name) {
    RegistryKey key;
    if (::RegCreateKeyW(HKEY_CURRENT_USER, (root + name).c_str(), key.put()))
        fail(NTE_FAIL);
}

void deleteContainer(const std::wstring& name) {
    if (::RegDeleteKeyW(HKEY_CURRENT_USER, (root + name).c_str()))
        fail(NTE_BAD_KEYSET);
}

std::vector<std::wstring> containerNames() {
    std::vector<std::wstring> names;
    RegistryKey key;
    wchar_t name[MAX_PATH];
    if (!::RegOpenKeyExW(HKEY_CURRENT_USER, root.c_str(), 0, KEY_READ, key.put()))
        while (!::RegEnumKeyW(key.get(), static_cast<DWORD>(names.size()), name, MAX_PATH))
            names.emplace_back(name);
    return names;
}

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
    if (!context.container)
        fail(NTE_PERM);
    Bytes value{key.isExportable};
    append(value, privateKeyInfo(key.pair));
    if (::RegSetKeyValueW(HKEY_CURRENT_USER, (root + *context.container).c_str(), keyName(spec).c_str(),
                          REG_BINARY, value.data(), lengthOf(value)))
        fail(NTE_FAIL);
}

const Algorithm* algorithmOf(const std::wstring& container) {
    const Bytes value = readKey(container, AT_KEYEXCHANGE);
    return value.empty() ? nullptr : readPrivateKeyInfo(View(value).subspan(1)).algorithm;
}

}  // namespace Corvane::Platform::Gost
