// The DLL as users get it, loaded by its path, so that neither the registry nor linked code stands in its
// place, and what tests do with its objects.
#pragma once

#include "../../tools/scripthost/unscriptable.h"
#include "../platform/import_patch.h"
#include "../unit/dialog_driver.h"
#include "../unit/fake_host.h"
#include "../unit/soon.h"
#include "com/runtime/automation.h"
#include "com/runtime/ptr.h"

#include <windows.h>

#include <ocidl.h>

#include <VetrelCorvane2_h.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace robustness {

using Corvane::DialogDriver;
using Corvane::Com::Bstr;
using Corvane::Com::ComPtr;
using Corvane::Com::Variant;
using Corvane::Com::viewOf;
using Corvane::Test::soon;

// The HRESULT of the component's error with this number.
constexpr HRESULT failureOf(HRESULT number) {
    return static_cast<HRESULT>(0x80040200) + number;
}

inline std::wstring componentPath() {
    return std::filesystem::path(CORVANE_COMPONENT).make_preferred().wstring();
}

// Loads the DLL for as long as it lives.
class Component {
public:
    Component() : module_(::LoadLibraryW(componentPath().c_str())) {
        if (!module_)
            throw std::runtime_error("the DLL cannot be loaded");
    }
    Component(const Component&) = delete;
    Component& operator=(const Component&) = delete;
    ~Component() { ::FreeLibrary(module_); }

    HRESULT canUnload() const { return exported<decltype(::DllCanUnloadNow)>("DllCanUnloadNow")(); }
    HRESULT registerServer() const { return exported<HRESULT WINAPI()>("DllRegisterServer")(); }

    ComPtr<IClassFactory> factory(REFCLSID clsid) const {
        ComPtr<IClassFactory> factory;
        exported<decltype(::DllGetClassObject)>("DllGetClassObject")(clsid, IID_IClassFactory,
                                                                     factory.putVoid());
        return factory;
    }
    // A new object; empty when it cannot be made.
    template <class Interface>
    ComPtr<Interface> create(REFCLSID clsid) const {
        ComPtr<Interface> object;
        if (const auto made = factory(clsid))
            made->CreateInstance(nullptr, __uuidof(Interface), object.putVoid());
        return object;
    }

private:
    template <class Function>
    Function* exported(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(::GetProcAddress(module_, name)));
    }

    HMODULE module_;
};

// A site that the user trusts for as long as it lives.
class TrustedPage {
public:
    TrustedPage() { ::RegSetKeyValueW(HKEY_CURRENT_USER, list, address, REG_SZ, L"", sizeof(L"")); }
    TrustedPage(const TrustedPage&) = delete;
    TrustedPage& operator=(const TrustedPage&) = delete;
    ~TrustedPage() { ::RegDeleteKeyValueW(HKEY_CURRENT_USER, list, address); }

    static constexpr wchar_t address[] = L"https://robustness.example";

private:
    static constexpr wchar_t list[] = L"SOFTWARE\\ZimVetrel\\VetrelCorvane\\TrustedSites";
};

// Every test begins with the DLL loaded and in a trusted page, and has to give back all it took.
class ComponentTest : public ::testing::Test {
protected:
    ComponentTest() { host_.answers = {{Corvane::Step::browserService, E_NOINTERFACE}}; }
    ~ComponentTest() override {
        EXPECT_EQ(host_.references, 0) << "the host's objects are still held";
        EXPECT_EQ(component_.canUnload(), S_OK) << "objects or locks are left";
    }

    // The object comes into the page at `url`; into none where there is no address.
    template <class Interface>
    void setSite(const ComPtr<Interface>& object, const wchar_t* url) {
        host_.href = url ? url : L"";
        EXPECT_EQ(object.template query<IObjectWithSite>()->SetSite(url ? host_.site() : nullptr), S_OK);
    }
    // A new object in the trusted page.
    template <class Interface>
    ComPtr<Interface> serviceOf(REFCLSID clsid) {
        auto object = component_.create<Interface>(clsid);
        setSite(object, TrustedPage::address);
        return object;
    }
    ComPtr<IBinaryObjectService> service() {
        return serviceOf<IBinaryObjectService>(__uuidof(BinaryObjectService));
    }
    // An object that holds what the hexadecimal text says.
    ComPtr<IBinaryObject> bytes(std::wstring_view hex) {
        ComPtr<IBinaryObject> object;
        EXPECT_EQ(service()->BinaryObjectFromHex(Bstr(hex).get(), object.put()), S_OK);
        return object;
    }

    Corvane::Test::Apartment apartment_{COINIT_MULTITHREADED};
    TrustedPage trustedPage_;
    Component component_;
    Corvane::FakeHost host_;
};

// What an object that is left alone offers, each under its own address.
template <class Interface>
ULONG referencesOf(Interface& object) {
    object.AddRef();
    return object.Release();
}

inline VARIANT variantOf(VARTYPE type, LONGLONG bits = 0) {
    VARIANT value;
    ::VariantInit(&value);
    V_I8(&value) = bits;
    V_VT(&value) = type;
    return value;
}

inline VARIANT variantTo(VARTYPE type, void* pointer) {
    return variantOf(type, static_cast<LONGLONG>(reinterpret_cast<INT_PTR>(pointer)));
}

// One call through IDispatch, as a script engine makes it: what Invoke returned, its result, and the
// exception it described.
class LateCall {
public:
    // `arguments` in the order of the script; they stay the caller's.
    LateCall(IDispatch& object, DISPID member, const std::vector<VARIANT>& arguments = {},
             WORD flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET) {
        std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
        DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
        UINT bad = 0;
        hr = object.Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters, result.put(),
                           &exception, &bad);
        if (hr == DISP_E_EXCEPTION && exception.pfnDeferredFillIn)
            exception.pfnDeferredFillIn(&exception);
    }
    LateCall(const LateCall&) = delete;
    LateCall& operator=(const LateCall&) = delete;
    ~LateCall() {
        for (BSTR text : {exception.bstrSource, exception.bstrDescription, exception.bstrHelpFile})
            ::SysFreeString(text);
    }

    // What the member itself failed with; the failure of the call where there was none.
    HRESULT failure() const { return hr == DISP_E_EXCEPTION ? exception.scode : hr; }
    std::wstring_view description() const { return viewOf(exception.bstrDescription); }

    HRESULT hr = E_UNEXPECTED;
    Variant result;
    EXCEPINFO exception{};
};

}  // namespace robustness
