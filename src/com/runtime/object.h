// What every coclass of the component is made of: reference count, interface table, late binding,
// safety for scripting, error information, class information, and the method frame.
//
//     class CAbout final : public Object<CAbout, About, IAbout, CBrowserObject<CAbout>>
//
// A coclass names its interfaces and writes its methods; nothing of the above is repeated in it.
#pragma once

#include "com/runtime/dispatch.h"
#include "com/runtime/frame.h"
#include "com/runtime/module.h"
#include "com/runtime/plain_object.h"
#include "com/runtime/ptr.h"

#include <windows.h>

#include <objsafe.h>
#include <ocidl.h>

#include <atomic>

namespace Corvane::Com {

// What an object of ours answers under GUID_NULL, and no other object does: the way from an interface
// pointer that a script passed to the class behind it. Which class that is, dynamic_cast tells.
class Implementation : public IUnknown {
protected:
    ~Implementation() = default;

private:
    // Destroyed after everything else of an object, whose parts may call foreign code when they go.
    ModuleReference module_;
};

inline constexpr DWORD supportedSafety =
    INTERFACESAFE_FOR_UNTRUSTED_CALLER | INTERFACESAFE_FOR_UNTRUSTED_DATA;

// T: the class itself, final. Coclass, Interface: the type library's. MixIns: further bases that implement
// one COM interface each, named by their member type `ComInterface`.
template <class T, class Coclass, class Interface, class... MixIns>
class Object : public Counted<Implementation, Interface, IObjectSafety, ISupportErrorInfo, IProvideClassInfo,
                              MixIns...> {
public:
    static const CLSID& classId() noexcept { return __uuidof(Coclass); }

    // IDispatch
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        if (!count)
            return E_POINTER;
        *count = 1;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
        if (!info)
            return E_POINTER;
        *info = nullptr;
        if (index != 0)
            return DISP_E_BADINDEX;
        return typeInfoOf(__uuidof(Interface), info);
    }

    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        const DispatchTable* table = nullptr;
        const HRESULT hr = dispatchTable(table);
        return FAILED(hr) ? hr : table->getIdsOfNames(names, count, ids);
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override {
        const DispatchTable* table = nullptr;
        const HRESULT hr = dispatchTable(table);
        return FAILED(hr) ? hr
                          : table->invoke(static_cast<Interface*>(this), member, flags, parameters, result,
                                          exception, badArgument);
    }

    // IObjectSafety
    HRESULT STDMETHODCALLTYPE GetInterfaceSafetyOptions(REFIID iid, DWORD* supported,
                                                        DWORD* enabled) override {
        if (!supported || !enabled)
            return E_POINTER;
        const bool known = findInterface(iid) != nullptr;
        *supported = *enabled = known ? supportedSafety : 0;
        return known ? S_OK : E_NOINTERFACE;
    }

    HRESULT STDMETHODCALLTYPE SetInterfaceSafetyOptions(REFIID iid, DWORD mask, DWORD enabled) override {
        if (!findInterface(iid))
            return E_NOINTERFACE;
        return (enabled & mask & ~supportedSafety) == 0 ? S_OK : E_FAIL;
    }

    // ISupportErrorInfo
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) override {
        if constexpr (requires { typename T::BaseInterface; }) {
            if (iid == __uuidof(typename T::BaseInterface))
                return S_OK;
        }
        return iid == __uuidof(Interface) ? S_OK : S_FALSE;
    }

    // IProvideClassInfo
    HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo** info) override {
        if (!info)
            return E_POINTER;
        *info = nullptr;
        return typeInfoOf(classId(), info);
    }

protected:
    ~Object() override {
        if (const DispatchTable* table = table_.load(std::memory_order_relaxed))
            table->release();
    }

    template <class Body>
    static HRESULT frame(const wchar_t* method, Body&& body) noexcept {
        return Com::frame(classId(), method, std::forward<Body>(body));
    }

    // GUID_NULL is not an interface: see Implementation.
    void* findInterface(REFIID iid) noexcept override {
        if (iid == __uuidof(Interface) || iid == __uuidof(IDispatch) || iid == __uuidof(IUnknown))
            return static_cast<Interface*>(this);
        if constexpr (requires { typename T::BaseInterface; }) {
            if (iid == __uuidof(typename T::BaseInterface))
                return static_cast<Interface*>(this);
        }
        if (iid == GUID_NULL)
            return static_cast<Implementation*>(this);
        if (iid == IID_IObjectSafety)
            return static_cast<IObjectSafety*>(this);
        if (iid == __uuidof(ISupportErrorInfo))
            return static_cast<ISupportErrorInfo*>(this);
        if (iid == __uuidof(IProvideClassInfo))
            return static_cast<IProvideClassInfo*>(this);
        void* found = nullptr;
        static_cast<void>(
            ((iid == __uuidof(typename MixIns::ComInterface)
                  ? (found = static_cast<typename MixIns::ComInterface*>(static_cast<MixIns*>(this)), true)
                  : false) ||
             ...));
        return found;
    }

private:
    // The class's table, fetched at the first late-bound call; two threads may both fetch it.
    HRESULT dispatchTable(const DispatchTable*& table) noexcept {
        table = table_.load(std::memory_order_acquire);
        if (table)
            return S_OK;
        if (const HRESULT hr = DispatchTable::acquire(__uuidof(Interface), &table); FAILED(hr))
            return hr;
        const DispatchTable* expected = nullptr;
        if (!table_.compare_exchange_strong(expected, table, std::memory_order_acq_rel)) {
            table->release();
            table = expected;
        }
        return S_OK;
    }

    std::atomic<const DispatchTable*> table_{nullptr};
};

}  // namespace Corvane::Com
