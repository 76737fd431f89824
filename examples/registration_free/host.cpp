// A program that carries VetrelCorvane2.dll with it, not registered: it prints the MD5 digest of a text,
// computed on another thread. Beside host.exe lie VetrelCorvane2.dll of its bitness and host.exe.manifest,
// which names it.
//
//   cl /EHsc /std:c++17 host.cpp ole32.lib oleaut32.lib uuid.lib user32.lib
//   g++ -std=c++17 -municode -static host.cpp -o host.exe -lole32 -loleaut32 -luuid
//
// The user is asked whether the site name://host.exe may use the component, unless it is trusted already.
#include <windows.h>

#include <ocidl.h>
#include <servprov.h>

#include <cstdio>
#include <initializer_list>
#include <stdexcept>
#include <vector>

namespace {

void check(HRESULT hr, const char* step) {
    if (FAILED(hr))
        throw std::runtime_error(step);
}

// What both objects of ours have in common: they live as long as main() and offer one interface.
template <class Interface>
class OnStack : public Interface {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        const bool known = iid == IID_IUnknown || iid == __uuidof(Interface);
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
};

// The component asks whose page it is in. This program is no browser and has no page, so that its name
// counts.
class Site : public OnStack<IServiceProvider> {
public:
    HRESULT STDMETHODCALLTYPE QueryService(REFGUID, REFIID, void** object) override {
        *object = nullptr;
        return E_NOINTERFACE;
    }
};

// Calls a method by its name; the arguments stand in their order.
VARIANT call(IDispatch* object, const wchar_t* name, std::initializer_list<VARIANT> arguments) {
    DISPID member = DISPID_UNKNOWN;
    auto* text = const_cast<wchar_t*>(name);
    check(object->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &member), "no such method");
    std::vector<VARIANT> reversed(std::rbegin(arguments), std::rend(arguments));
    DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    VARIANT result{};
    EXCEPINFO error{};
    const HRESULT hr = object->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                                      &result, &error, nullptr);
    if (error.bstrDescription)
        std::printf("%ls\n", error.bstrDescription);
    check(hr, "the call failed");
    return result;
}

VARIANT object(IDispatch* value) {
    VARIANT variant{};
    variant.vt = VT_DISPATCH;
    variant.pdispVal = value;
    return variant;
}

VARIANT text(const wchar_t* value) {
    VARIANT variant{};
    variant.vt = VT_BSTR;
    variant.bstrVal = ::SysAllocString(value);
    return variant;
}

VARIANT number(long value) {
    VARIANT variant{};
    variant.vt = VT_I4;
    variant.lVal = value;
    return variant;
}

// callback(result, error): the arguments arrive in reverse order, with "this" before them.
class Callback : public OnStack<IDispatch> {
public:
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS* parameters, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        const VARIANT& error = parameters->rgvarg[parameters->cArgs - 2];
        const VARIANT& result = parameters->rgvarg[parameters->cArgs - 1];
        if (error.vt == VT_BSTR) {
            std::printf("%ls\n", error.bstrVal);
        } else {
            VARIANT hex = call(result.pdispVal, L"ToHexString", {});
            std::printf("%ls\n", hex.bstrVal);
            ::VariantClear(&hex);
        }
        ::PostQuitMessage(error.vt == VT_BSTR ? 1 : 0);
        return S_OK;
    }
};

// The object of a ProgID, which learns of its site at once: without one it refuses every call.
IDispatch* create(const wchar_t* progId, Site& site) {
    CLSID clsid;
    check(::CLSIDFromProgID(progId, &clsid), "the manifest does not name the component");
    IDispatch* created = nullptr;
    check(::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                             reinterpret_cast<void**>(&created)),
          "the object cannot be created");
    IObjectWithSite* told = nullptr;
    if (SUCCEEDED(created->QueryInterface(IID_IObjectWithSite, reinterpret_cast<void**>(&told)))) {
        told->SetSite(&site);
        told->Release();
    }
    return created;
}

int run() {
    // An apartment with messages, since the callback comes as one.
    ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    Site site;
    Callback callback;
    IDispatch* service = create(L"VetrelCorvane2.BinaryObjectService", site);
    VARIANT source = text(L"abc");
    VARIANT bytes = call(service, L"BinaryObjectFromString", {source, number(CP_UTF8)});
    call(service, L"GetMd5Async", {bytes, object(&callback)});

    MSG message;
    while (::GetMessageW(&message, nullptr, 0, 0) > 0)
        ::DispatchMessageW(&message);

    ::VariantClear(&source);
    ::VariantClear(&bytes);
    service->Release();
    ::CoUninitialize();
    return static_cast<int>(message.wParam);
}

}  // namespace

int wmain() {
    try {
        return run();
    } catch (const std::exception& error) {
        std::printf("%s\n", error.what());
        return 1;
    }
}
