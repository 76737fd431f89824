#include "containers.h"

namespace Corvane::Platform::Gost {
namespace {

const std::wstring root = L"Software\\Corvane Tests\\GOST containers\\";

std::wstring keyName(DWORD spec) {
    return L"key " + std::to_wstring(spec);
}

Bytes readValue(const std::wstring& container, const std::wstring& name) {
    const std::wstring path = root + container;
    DWORD size = 0;
    if (::RegGetValueW(HKEY_CURRENT_USER, path.c_str(), name.c_str(), RRF_RT_REG_BINARY, nullptr, nullptr,
                       &size))
        return {};
    Bytes value(size);
    if (::RegGetValueW(HKEY_CURRENT_USER, path.c_str(), name.c_str(), RRF_RT_REG_BINARY, nullptr,
                       value.data(), &size))
        fail(NTE_BAD_KEYSET);
    return value;
}

void writeValue(const std::wstring& container, const std::wstring& name, View value) {
    if (::RegSetKeyValueW(HKEY_CURRENT_USER, (root + container).c_str(), name.c_str(), REG_BINARY,
                          value.data(), static_cast<DWORD>(value.size())))
        fail(NTE_FAIL);
}

}  // namespace

bool containerExists(const std::wstring& name) {
    HKEY key = nullptr;
    if (::RegOpenKeyExW(HKEY_CURRENT_USER, (root + name).c_str(), 0, KEY_READ, &key))
        return false;
    ::RegCloseKey(key);
    return true;
}

void createContainer(const std::wstring& name) {
    HKEY key = nullptr;
    if (::RegCreateKeyExW(HKEY_CURRENT_USER, (root + name).c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key,
                          nullptr))
        fail(NTE_FAIL);
    ::RegCloseKey(key);
}

void deleteContainer(const std::wstring& name) {
    if (::RegDeleteKeyW(HKEY_CURRENT_USER, (root + name).c_str()))
        fail(NTE_BAD_KEYSET);
}

std::vector<std::wstring> containerNames() {
    std::vector<std::wstring> names;
    HKEY key = nullptr;
    if (::RegOpenKeyExW(HKEY_CURRENT_USER, root.c_str(), 0, KEY_READ, &key))
        return names;
    wchar_t name[MAX_PATH];
    for (DWORD index = 0, size = MAX_PATH;
         ::RegEnumKeyExW(key, index, name, &size, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++index, size = MAX_PATH)
        names.emplace_back(name, size);
    ::RegCloseKey(key);
    return names;
}

std::optional<StoredKey> loadKey(const std::wstring& container, DWORD spec) {
    const Bytes value = readValue(container, keyName(spec));
    if (value.empty())
        return std::nullopt;
    return StoredKey{readPrivateKeyInfo(View(value).subspan(1)), value[0] != 0};
}

void storeKey(const std::wstring& container, DWORD spec, const StoredKey& key) {
    Bytes value{key.exportable};
    writeValue(container, keyName(spec), append(value, privateKeyInfo(key.pair)));
}

}  // namespace Corvane::Platform::Gost
