// The DLL as users get it, loaded by its path, so that neither the registry nor linked code stands in its
// place.
#pragma once

#include "com/automation.h"
#include "com/ptr.h"

#include <windows.h>

#include <ocidl.h>
#include <servprov.h>

#include <VetrelCorvane2_h.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <string_view>

namespace robustness {

using Corvane::Com::Bstr;
using Corvane::Com::ComPtr;
using Corvane::Com::Variant;
using Corvane::Com::viewOf;

// Full path of the DLL under test.
std::wstring componentPath();

// Loads the DLL for as long as it lives.
class Component {
public:
    Component();
    Component(const Component&) = delete;
    Component& operator=(const Component&) = delete;
    ~Component();

    HRESULT classObject(REFCLSID clsid, REFIID iid, void** object) const {
        return classObject_(clsid, iid, object);
    }
    HRESULT canUnload() const { return canUnload_(); }
    HRESULT registerServer() const { return register_(); }
    HRESULT unregisterServer() const { return unregister_(); }

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
    HRESULT(WINAPI* register_)();
    HRESULT(WINAPI* unregister_)();
};

// The site of a host without a browser. The component then takes name://<this program> for the address.
class PlainSite final : public IServiceProvider {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE QueryService(REFGUID, REFIID, void** object) override;

private:
    std::atomic<ULONG> references_{1};
};

// Every test begins with the DLL loaded and this program's address trusted, and has to give back all it took.
class ComponentTest : public ::testing::Test {
protected:
    ~ComponentTest() override { EXPECT_EQ(component_.canUnload(), S_OK) << "objects or locks are left"; }

    // A service of a trusted host.
    ComPtr<IBinaryObjectService> service() const;
    // An object that holds what the hexadecimal text says.
    ComPtr<IBinaryObject> bytes(std::wstring_view hex) const;

    Component component_;
};

// The hexadecimal text of an object's bytes; "failed" when there is none.
std::wstring hexOf(IBinaryObject& object);

// What an object that is left alone offers, each under its own address.
template <class Interface>
ULONG referencesOf(Interface& object) {
    object.AddRef();
    return object.Release();
}

}  // namespace robustness
