// Access control of the coclasses that pages use: an object learns from its site which page it lives in,
// and works only if that page's site is trusted.
#pragma once

#include "com/hosting_page.h"
#include "com/ptr.h"

#include <windows.h>

#include <ocidl.h>

#include <exception>

namespace Corvane::Com {

// What CBrowserObject does, for all coclasses alike. Used by one thread at a time.
class BrowserSite {
public:
    // Keeps `site` and resolves the page. What fails on the way is logged and kept, for checkAccess() to
    // raise until a later site is resolved; E_FAIL, which keeps the former page, is only for a host whose
    // file name cannot be read. A null site lets go of the former one and leaves no access.
    HRESULT setSite(IUnknown* site) noexcept;

    // The site under the interface `iid`; E_FAIL when there is none.
    HRESULT getSite(REFIID iid, void** site) const noexcept;

    // Returns when the page may use the object. If `mayAsk`, the user may be asked. Throws Exception
    // E_ACCESS_DENIED, what was kept by setSite(), and what remembering the user's answer may throw.
    void checkAccess(bool mayAsk) const;

    HWND mainWindow() const noexcept { return page_.mainWindow; }

private:
    ComPtr<IUnknown> site_;
    HostingPage page_;
    std::exception_ptr siteError_;
};

}  // namespace Corvane::Com

// The mix-in; T is the coclass it is mixed into, which supplies IUnknown.
template <class T>
class CBrowserObject : public IObjectWithSite {
public:
    using ComInterface = IObjectWithSite;

    // IObjectWithSite
    HRESULT STDMETHODCALLTYPE SetSite(IUnknown* site) override { return site_.setSite(site); }
    HRESULT STDMETHODCALLTYPE GetSite(REFIID iid, void** site) override { return site_.getSite(iid, site); }

protected:
    ~CBrowserObject() = default;

    // See BrowserSite.
    void checkAccess(bool mayAsk) const { site_.checkAccess(mayAsk); }

    // Owner for dialogs; null when the host is no browser.
    HWND mainWindow() const noexcept { return site_.mainWindow(); }

private:
    Corvane::Com::BrowserSite site_;
};
