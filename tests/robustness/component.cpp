#include "component.h"

#include <stdexcept>

namespace robustness {
namespace {

constexpr wchar_t trustedSites[] = L"SOFTWARE\\ZimVetrel\\VetrelCorvane\\TrustedSites";

std::wstring programPath() {
    std::wstring path(MAX_PATH, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
    return path;
}

// The apartment of the tests, and the trust in this program's address.
class Surroundings : public ::testing::Environment {
public:
    void SetUp() override {
        ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
        const std::wstring path = programPath();
        address_ = L"name://" + path.substr(path.find_last_of(L'\\') + 1);
        const DWORD one = 1;
        ASSERT_EQ(::RegSetKeyValueW(HKEY_CURRENT_USER, trustedSites, address_.c_str(), REG_DWORD, &one,
                                    sizeof(one)),
                  ERROR_SUCCESS);
    }

    void TearDown() override {
        ::RegDeleteKeyValueW(HKEY_CURRENT_USER, trustedSites, address_.c_str());
        ::CoUninitialize();
    }

private:
    std::wstring address_;
};

[[maybe_unused]] const auto* const surroundings = ::testing::AddGlobalTestEnvironment(new Surroundings);

template <class Function>
Function exported(HMODULE module, const char* name) {
    const auto address = reinterpret_cast<void (*)()>(::GetProcAddress(module, name));
    if (!address)
        throw std::runtime_error(name);
    return reinterpret_cast<Function>(address);
}

}  // namespace

std::wstring componentPath() {
    const std::wstring program = programPath();
    const std::wstring relative = program.substr(0, program.find_last_of(L'\\') + 1) + CORVANE_COMPONENT;
    std::wstring path(MAX_PATH, L'\0');
    path.resize(::GetFullPathNameW(relative.c_str(), MAX_PATH, path.data(), nullptr));
    return path;
}

Component::Component() : module_(::LoadLibraryW(componentPath().c_str())) {
    if (!module_)
        throw std::runtime_error("the DLL cannot be loaded");
    classObject_ = exported<decltype(classObject_)>(module_, "DllGetClassObject");
    canUnload_ = exported<decltype(canUnload_)>(module_, "DllCanUnloadNow");
    register_ = exported<decltype(register_)>(module_, "DllRegisterServer");
    unregister_ = exported<decltype(unregister_)>(module_, "DllUnregisterServer");
}

Component::~Component() {
    ::FreeLibrary(module_);
}

ComPtr<IClassFactory> Component::factory(REFCLSID clsid) const {
    ComPtr<IClassFactory> factory;
    classObject_(clsid, __uuidof(IClassFactory), factory.putVoid());
    return factory;
}

HRESULT PlainSite::QueryInterface(REFIID iid, void** object) {
    *object = nullptr;
    if (iid != __uuidof(IServiceProvider) && iid != __uuidof(IUnknown))
        return E_NOINTERFACE;
    *object = static_cast<IServiceProvider*>(this);
    AddRef();
    return S_OK;
}

ULONG PlainSite::Release() {
    const ULONG left = --references_;
    if (left == 0)
        delete this;
    return left;
}

HRESULT PlainSite::QueryService(REFGUID, REFIID, void** object) {
    *object = nullptr;
    return E_NOINTERFACE;
}

ComPtr<IBinaryObjectService> ComponentTest::service() const {
    auto service = component_.create<IBinaryObjectService>(__uuidof(BinaryObjectService));
    EXPECT_TRUE(service);
    const auto site = ComPtr<PlainSite>::adopt(new PlainSite);
    EXPECT_EQ(service.query<IObjectWithSite>()->SetSite(site.get()), S_OK);
    return service;
}

ComPtr<IBinaryObject> ComponentTest::bytes(std::wstring_view hex) const {
    ComPtr<IBinaryObject> object;
    EXPECT_EQ(service()->BinaryObjectFromHex(Bstr(hex).get(), object.put()), S_OK);
    return object;
}

std::wstring hexOf(IBinaryObject& object) {
    Bstr text;
    return object.ToHexString(text.put()) == S_OK ? std::wstring(text.view()) : L"failed";
}

}  // namespace robustness
