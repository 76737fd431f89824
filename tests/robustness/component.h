// The DLL as users get it, loaded by its path, so that neither the registry nor linked code stands in its
// place, and what tests do with its objects.
#pragma once

#include "../../tools/scripthost/unscriptable.h"
#include "../unit/fake_host.h"
#include "com/runtime/automation.h"
#include "com/runtime/ptr.h"

#include <windows.h>

#include <ocidl.h>

#include <VetrelCorvane2_h.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <string_view>
#include <vector>

namespace robustness {

using Corvane::Com::Bstr;
using Corvane::Com::ComPtr;
using Corvane::Com::Variant;
using Corvane::Com::viewOf;

constexpr HRESULT accessDenied = static_cast<HRESULT>(0x800405E9);

// Full path of the DLL under test.
std::wstring componentPath();

// Loads the DLL for as long as it lives.
class Component {
public:
    Component();
    Component(const Component&) = delete;
    Component& operator=(const Component&) = delete;
    ~Component() { ::FreeLibrary(module_); }

    HRESULT classObject(REFCLSID clsid, REFIID iid, void** object) const {
        return classObject_(clsid, iid, object);
    }
    HRESULT canUnload() const { return canUnload_(); }
    HRESULT registerServer() const;

    ComPtr<IClassFactory> factory(REFCLSID clsid) const;

    // A new object; empty when it cannot be made.
    template <class Interface>
    ComPtr<Interface> create(REFCLSID clsid) const {
        ComPtr<Interface> object;
        if (const auto made = factory(clsid))
            made->CreateInstance(nullptr, __uuidof(Interface), object.putVoid());
        return object;
    }

private:
    HMODULE module_;
    decltype(&::DllGetClassObject) classObject_;
    decltype(&::DllCanUnloadNow) canUnload_;
};

// A site that the user trusts for as long as it lives.
class TrustedPage {
public:
    TrustedPage();
    TrustedPage(const TrustedPage&) = delete;
    TrustedPage& operator=(const TrustedPage&) = delete;
    ~TrustedPage();

    static constexpr wchar_t address[] = L"https://robustness.example";
};

// Every test begins with the DLL loaded and in a trusted page, and has to give back all it took.
class ComponentTest : public ::testing::Test {
protected:
    ComponentTest();
    ~ComponentTest() override;

    // A service of the page at `url`.
    template <class Interface>
    ComPtr<Interface> serviceOf(REFCLSID clsid, const wchar_t* url = TrustedPage::address) {
        host_.href = url;
        auto service = component_.create<Interface>(clsid);
        EXPECT_EQ(service.template query<IObjectWithSite>()->SetSite(host_.site()), S_OK);
        return service;
    }
    ComPtr<IBinaryObjectService> service() {
        return serviceOf<IBinaryObjectService>(__uuidof(BinaryObjectService));
    }
    // An object that holds what the hexadecimal text says.
    ComPtr<IBinaryObject> bytes(std::wstring_view hex);

    TrustedPage trustedPage_;
    Component component_;
    Corvane::FakeHost host_;
};

// The hexadecimal text of an object's bytes; "failed" when there is none.
std::wstring hexOf(IBinaryObject& object);

// What an object that is left alone offers, each under its own address.
template <class Interface>
ULONG referencesOf(Interface& object) {
    object.AddRef();
    return object.Release();
}

// Any interface pointer as another one, as no careful caller passes it.
template <class Interface>
Interface* mistakenFor(IUnknown* object) {
    return static_cast<Interface*>(static_cast<void*>(object));
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
             WORD flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET);
    LateCall(const LateCall&) = delete;
    LateCall& operator=(const LateCall&) = delete;
    ~LateCall();

    // What the member itself failed with; the failure of the call where there was none.
    HRESULT failure() const { return hr == DISP_E_EXCEPTION ? exception.scode : hr; }

    HRESULT hr = E_UNEXPECTED;
    Variant result;
    EXCEPINFO exception{};
};

// An object that says it is of the component and is not: answers every interface it is asked for with itself.
// All that stands behind it are the methods of IDispatch: a component that called any further one would
// crash.
class ForeignObject final : public ScriptHost::Unscriptable<IDispatch> {
public:
    // What QueryInterface(GUID_NULL) answers: `hr`, and when that is a success, `answer`.
    explicit ForeignObject(HRESULT hr, IUnknown* answer = nullptr) : hr_(hr), answer_(answer) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override { return --references_; }

    // References held by others.
    ULONG references() const { return references_; }

private:
    HRESULT hr_;
    IUnknown* answer_;
    std::atomic<ULONG> references_{0};
};

}  // namespace robustness
