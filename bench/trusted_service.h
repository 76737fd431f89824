// A service object whose calls are allowed, for the benchmarks. The component must be registered.
#pragma once

#include "com/runtime/plain_object.h"
#include "com/runtime/ptr.h"
#include "core/handles.h"

#include <windows.h>

#include <ocidl.h>
#include <servprov.h>

#include <VetrelCorvane2_h.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace bench {

// A peer that refuses its work would look fast.
inline void must(bool succeeded, const char* what) {
    if (!succeeded) {
        std::fprintf(stderr, "%s failed\n", what);
        std::exit(1);
    }
}

// A host without a browser.
class Site final : public Corvane::Com::PlainObject<IServiceProvider> {
    HRESULT STDMETHODCALLTYPE QueryService(REFGUID, REFIID, void** object) override {
        *object = nullptr;
        return E_NOINTERFACE;
    }
};

// This program as a trusted site, for as long as it lives.
class Trust {
public:
    Trust() {
        wchar_t program[MAX_PATH];
        must(::GetModuleFileNameW(nullptr, program, MAX_PATH) != 0, "GetModuleFileNameW");
        const std::wstring path(program);
        address_ = L"name://" + path.substr(path.rfind(L'\\') + 1);
        const DWORD one = 1;
        must(::RegSetKeyValueW(HKEY_CURRENT_USER, sites, address_.c_str(), REG_DWORD, &one, sizeof(one)) ==
                 ERROR_SUCCESS,
             "RegSetKeyValueW");
    }
    ~Trust() { ::RegDeleteKeyValueW(HKEY_CURRENT_USER, sites, address_.c_str()); }
    Trust(const Trust&) = delete;
    Trust& operator=(const Trust&) = delete;

    // The list that it stands in.
    static Corvane::RegistryKey openSites() {
        Corvane::RegistryKey key;
        must(::RegOpenKeyExW(HKEY_CURRENT_USER, sites, 0, KEY_READ, key.put()) == ERROR_SUCCESS,
             "RegOpenKeyExW");
        return key;
    }

private:
    static constexpr wchar_t sites[] = L"SOFTWARE\\ZimVetrel\\VetrelCorvane\\TrustedSites";
    std::wstring address_;
};

// Tells a service that this program, no browser, is its host.
inline void giveSite(IUnknown& object) {
    Corvane::Com::ComPtr<IObjectWithSite> target;
    must(SUCCEEDED(object.QueryInterface(__uuidof(IObjectWithSite), target.putVoid())) &&
             SUCCEEDED(target->SetSite(Corvane::Com::makeObject<Site>().get())),
         "SetSite");
}

inline Corvane::Com::ComPtr<IBinaryObjectService> trustedService() {
    Corvane::Com::ComPtr<IBinaryObjectService> service;
    must(SUCCEEDED(::CoCreateInstance(__uuidof(BinaryObjectService), nullptr, CLSCTX_INPROC_SERVER,
                                      __uuidof(IBinaryObjectService), service.putVoid())),
         "CoCreateInstance");
    giveSite(*service);
    return service;
}

}  // namespace bench
