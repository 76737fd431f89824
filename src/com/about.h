// About: what the component is, and whether the page may use it.
#pragma once

#include "com/browser_object.h"
#include "com/object.h"

#include <VetrelCorvane2_h.h>

class CAbout final : public Corvane::Com::Object<CAbout, About, IAbout, CBrowserObject<CAbout>> {
public:
    HRESULT STDMETHODCALLTYPE get_Version(BSTR* version) override;
    HRESULT STDMETHODCALLTYPE get_RegVersion(BSTR* version) override;
    HRESULT STDMETHODCALLTYPE get_HasAccess(VARIANT_BOOL* access) override;
    HRESULT STDMETHODCALLTYPE get_WinVersion(BSTR* version) override;
};
