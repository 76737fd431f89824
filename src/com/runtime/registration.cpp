#include "com/runtime/registration.h"

#include "com/runtime/coclasses.h"
#include "com/runtime/module.h"
#include "com/runtime/ptr.h"
#include "com/runtime/version_text.h"
#include "core/check.h"
#include "core/handles.h"

#include <VetrelCorvane2_h.h>
#include <oleauto.h>

#include <array>
#include <string_view>

// In oleaut32 since Windows Vista; MinGW's headers do not declare them.
extern "C" {
__declspec(dllimport) HRESULT WINAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* file, OLECHAR* help);
__declspec(dllimport) HRESULT WINAPI UnRegisterTypeLibForUser(REFGUID, WORD, WORD, LCID, SYSKIND);
}

namespace Corvane::Com {
namespace {

constexpr std::wstring_view component = L"VetrelCorvane2";

// CATID_SafeForScripting and CATID_SafeForInitializing.
constexpr std::array<std::wstring_view, 2> safetyCategories = {L"{7DD95801-9882-11CF-9FA9-00AA006C42C4}",
                                                               L"{7DD95802-9882-11CF-9FA9-00AA006C42C4}"};

#ifdef _WIN64
constexpr REGSAM otherBitness = KEY_WOW64_32KEY;
#else
constexpr REGSAM otherBitness = KEY_WOW64_64KEY;
#endif

std::wstring textOf(const GUID& guid) {
    std::array<wchar_t, 39> text{};
    ::StringFromGUID2(guid, text.data(), static_cast<int>(text.size()));
    return text.data();
}

RegistryKey createKey(HKEY parent, const std::wstring& path, REGSAM rights = KEY_WRITE) {
    RegistryKey key;
    checkStatus(::RegCreateKeyExW(parent, path.c_str(), 0, nullptr, 0, rights, nullptr, key.put(), nullptr),
                E_REG_KEY_CREATE, L"RegCreateKeyExW");
    return key;
}

void setText(const RegistryKey& key, const wchar_t* name, std::wstring_view text) {
    const std::wstring value(text);
    checkStatus(::RegSetValueExW(key.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                                 static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))),
                E_REG_VALUE_SET, L"RegSetValueExW");
}

HKEY hiveOf(RegistrationScope scope) {
    return scope == RegistrationScope::machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

// With the rights that deleting trees below it asks for.
RegistryKey openClasses(RegistrationScope scope) {
    return createKey(hiveOf(scope), L"Software\\Classes", KEY_READ | KEY_WRITE | DELETE);
}

// A key of the class registry with its default text.
void writeKey(const RegistryKey& classes, const std::wstring& path, std::wstring_view text) {
    setText(createKey(classes.get(), path), nullptr, text);
}

void deleteTree(const RegistryKey& parent, const std::wstring& path) {
    const LSTATUS status = ::RegDeleteTreeW(parent.get(), path.c_str());
    if (status != ERROR_FILE_NOT_FOUND)
        checkStatus(status, E_REG_KEY_CREATE, L"RegDeleteTreeW");
}

struct ClassNames {
    explicit ClassNames(const Coclass& coclass)
        : clsid(textOf(*coclass.clsid)),
          key(L"CLSID\\" + clsid),
          progId(std::wstring(component) + L"." + coclass.name),
          versionedProgId(progId + L"." + coclass.version) {}

    std::wstring clsid;
    std::wstring key;
    std::wstring progId;
    std::wstring versionedProgId;
};

void registerClass(const RegistryKey& classes, const Coclass& coclass, const std::wstring& file) {
    const ClassNames names(coclass);
    writeKey(classes, names.key, names.progId);
    {
        const RegistryKey server = createKey(classes.get(), names.key + L"\\InprocServer32");
        setText(server, nullptr, file);
        setText(server, L"ThreadingModel", L"Both");
    }
    writeKey(classes, names.key + L"\\ProgID", names.versionedProgId);
    writeKey(classes, names.key + L"\\VersionIndependentProgID", names.progId);
    writeKey(classes, names.key + L"\\TypeLib", textOf(LIBID_VetrelCorvaneLib));
    writeKey(classes, names.key + L"\\Version", versionText);
    createKey(classes.get(), names.key + L"\\Programmable");
    for (const std::wstring_view category : safetyCategories)
        createKey(classes.get(), names.key + L"\\Implemented Categories\\" + std::wstring(category));

    for (const std::wstring& progId : {names.progId, names.versionedProgId}) {
        writeKey(classes, progId, names.progId);
        writeKey(classes, progId + L"\\CLSID", names.clsid);
    }
    writeKey(classes, names.progId + L"\\CurVer", names.versionedProgId);
}

bool isRegisteredForOtherBitness(RegistrationScope scope, const ClassNames& names) {
    RegistryKey key;
    return ::RegOpenKeyExW(hiveOf(scope), (L"Software\\Classes\\" + names.key).c_str(), 0,
                           KEY_READ | otherBitness, key.put()) == ERROR_SUCCESS;
}

void unregisterClass(const RegistryKey& classes, const Coclass& coclass, RegistrationScope scope) {
    const ClassNames names(coclass);
    deleteTree(classes, names.key);
    if (isRegisteredForOtherBitness(scope, names))
        return;
    deleteTree(classes, names.progId);
    deleteTree(classes, names.versionedProgId);
}

void registerTypeLibrary(RegistrationScope scope, std::wstring file) {
    ComPtr<ITypeLib> library;
    checkHresult(::LoadTypeLibEx(file.c_str(), REGKIND_NONE, library.put()), E_ACTIVEX, L"LoadTypeLibEx");
    // MinGW's releases differ in whether the arguments are const, so the functions have no common type.
    const HRESULT hr = scope == RegistrationScope::machine
                           ? ::RegisterTypeLib(library.get(), file.data(), nullptr)
                           : ::RegisterTypeLibForUser(library.get(), file.data(), nullptr);
    checkHresult(hr, E_ACTIVEX, L"RegisterTypeLib");
}

// Systems differ in what they answer when a library that is not registered is to be unregistered.
bool isTypeLibraryRegistered() {
    std::array<wchar_t, 20> version{};
    ::wsprintfW(version.data(), L"%x.%x", CORVANE_VERSION_MAJOR, CORVANE_VERSION_MINOR);
    const std::wstring path = L"TypeLib\\" + textOf(LIBID_VetrelCorvaneLib) + L"\\" + version.data();
    RegistryKey key;
    return ::RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, key.put()) == ERROR_SUCCESS;
}

void unregisterTypeLibrary(RegistrationScope scope) {
    if (!isTypeLibraryRegistered())
        return;
#ifdef _WIN64
    constexpr SYSKIND kind = SYS_WIN64;
#else
    constexpr SYSKIND kind = SYS_WIN32;
#endif
    auto* const call =
        scope == RegistrationScope::machine ? &::UnRegisterTypeLib : &::UnRegisterTypeLibForUser;
    const HRESULT hr =
        call(LIBID_VetrelCorvaneLib, CORVANE_VERSION_MAJOR, CORVANE_VERSION_MINOR, LOCALE_NEUTRAL, kind);
    if (hr != TYPE_E_REGISTRYACCESS)  // absent
        checkHresult(hr, E_ACTIVEX, L"UnRegisterTypeLib");
}

// The text of a key of the class registry below the class of About; empty where there is none.
std::wstring readAboutKey(const wchar_t* name) {
    const std::wstring path = L"CLSID\\" + textOf(__uuidof(About)) + L"\\" + name;
    // Longer than the longest path.
    std::wstring text(32768, L'\0');
    auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    if (::RegGetValueW(HKEY_CLASSES_ROOT, path.c_str(), nullptr, RRF_RT_REG_SZ, nullptr, text.data(),
                       &size) != ERROR_SUCCESS)
        return {};
    text.resize(wcsnlen(text.data(), text.size()));
    return text;
}

}  // namespace

void registerComponent(RegistrationScope scope) {
    try {
        const std::wstring file = Module::path();
        const RegistryKey classes = openClasses(scope);
        for (const Coclass& coclass : coclasses())
            registerClass(classes, coclass, file);
        registerTypeLibrary(scope, file);
    } catch (...) {
        const std::exception_ptr failure = std::current_exception();
        try {
            unregisterComponent(scope);
        } catch (...) {
            // The first failure is the one to report.
        }
        std::rethrow_exception(failure);
    }
}

void unregisterComponent(RegistrationScope scope) {
    const RegistryKey classes = openClasses(scope);
    std::exception_ptr failure;
    const auto attempt = [&failure](const auto& step) {
        try {
            step();
        } catch (...) {
            if (!failure)
                failure = std::current_exception();
        }
    };
    for (const Coclass& coclass : coclasses())
        attempt([&] { unregisterClass(classes, coclass, scope); });
    attempt([&] { unregisterTypeLibrary(scope); });
    if (failure)
        std::rethrow_exception(failure);
}

std::wstring registeredVersion() {
    return readAboutKey(L"Version");
}

std::wstring registeredFile() {
    return readAboutKey(L"InprocServer32");
}

}  // namespace Corvane::Com
