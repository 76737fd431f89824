#include "component.h"

#include <stdexcept>

namespace robustness {
namespace {

constexpr wchar_t trustedSites[] = L"SOFTWARE\\ZimVetrel\\VetrelCorvane\\TrustedSites";

template <class Function>
Function exported(HMODULE module, const char* name) {
    const auto address = reinterpret_cast<void (*)()>(::GetProcAddress(module, name));
    if (!address)
        throw std::runtime_error(name);
    return reinterpret_cast<Function>(address);
}

// A path relative to this program, in full.
std::wstring pathOf(const wchar_t* relative) {
    wchar_t program[MAX_PATH];
    const std::wstring_view own(program, ::GetModuleFileNameW(nullptr, program, MAX_PATH));
    const auto joined = std::wstring(own.substr(0, own.find_last_of(L'\\') + 1)) + relative;
    wchar_t path[MAX_PATH];
    return {path, ::GetFullPathNameW(joined.c_str(), MAX_PATH, path, nullptr)};
}

}  // namespace

std::wstring componentPath() {
    return pathOf(CORVANE_COMPONENT);
}

Component::Component() {
    module_ = ::LoadLibraryW(componentPath().c_str());
    if (!module_)
        throw std::runtime_error("the DLL cannot be loaded");
    classObject_ = exported<decltype(classObject_)>(module_, "DllGetClassObject");
    canUnload_ = exported<decltype(canUnload_)>(module_, "DllCanUnloadNow");
}

HRESULT Component::registerServer() const {
    return exported<HRESULT(WINAPI*)()>(module_, "DllRegisterServer")();
}

ComPtr<IClassFactory> Component::factory(REFCLSID clsid) const {
    ComPtr<IClassFactory> factory;
    classObject_(clsid, __uuidof(IClassFactory), factory.putVoid());
    return factory;
}

TrustedPage::TrustedPage() {
    ::RegSetKeyValueW(HKEY_CURRENT_USER, trustedSites, address, REG_SZ, L"", sizeof(L""));
}

TrustedPage::~TrustedPage() {
    ::RegDeleteKeyValueW(HKEY_CURRENT_USER, trustedSites, address);
}

ComponentTest::ComponentTest() {
    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    host_.answers = {{Corvane::Step::browserService, E_NOINTERFACE}};
}

ComponentTest::~ComponentTest() {
    EXPECT_EQ(host_.references, 0) << "the host's objects are still held";
    EXPECT_EQ(component_.canUnload(), S_OK) << "objects or locks are left";
    ::CoUninitialize();
}

ComPtr<IBinaryObject> ComponentTest::bytes(std::wstring_view hex) {
    ComPtr<IBinaryObject> object;
    EXPECT_EQ(service()->BinaryObjectFromHex(Bstr(hex).get(), object.put()), S_OK);
    return object;
}

std::wstring hexOf(IBinaryObject& object) {
    Bstr text;
    return object.ToHexString(text.put()) == S_OK ? std::wstring(text.view()) : L"failed";
}

LateCall::LateCall(IDispatch& object, DISPID member, const std::vector<VARIANT>& arguments, WORD flags) {
    std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
    DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    UINT bad = 0;
    hr = object.Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters, result.put(), &exception,
                       &bad);
    if (hr == DISP_E_EXCEPTION && exception.pfnDeferredFillIn)
        exception.pfnDeferredFillIn(&exception);
}

LateCall::~LateCall() {
    ::SysFreeString(exception.bstrSource);
    ::SysFreeString(exception.bstrDescription);
    ::SysFreeString(exception.bstrHelpFile);
}

HRESULT ForeignObject::QueryInterface(REFIID iid, void** object) {
    const bool implementation = iid == GUID_NULL;
    IUnknown* const answer = !implementation ? this : SUCCEEDED(hr_) ? answer_ : nullptr;
    if (answer)
        answer->AddRef();
    *object = answer;
    return implementation ? hr_ : S_OK;
}

}  // namespace robustness
