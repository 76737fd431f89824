// Access control of the coclasses that pages use: an object learns from its site which page it lives in,
// and works only if that page's site is trusted.
#pragma once

#include "com/access/page_access.h"
#include "com/runtime/ptr.h"

#include <windows.h>

#include <ocidl.h>

#include <utility>

namespace Corvane::Com {

// What CBrowserObject does, for all coclasses alike. Used by one thread at a time.
class BrowserSite {
public:
    explicit BrowserSite(SharedAccess access = PageAccess::ofNobody()) noexcept
        : access_(std::move(access)) {}

    // Keeps `site` and resolves the page. What fails on the way is logged and kept, for checkAccess() to
    // raise until a later site is resolved; E_FAIL, which keeps the former page, is only for a host whose
    // file name cannot be read. A null site lets go of the former one and leaves no access. An object whose
    // access was checked when it was made keeps the site and nothing else.
    HRESULT setSite(IUnknown* site) noexcept;

    // The site under the interface `iid`; E_FAIL when there is none.
    HRESULT getSite(REFIID iid, void** site) const noexcept;

    // What the object may, as things are now.
    const SharedAccess& access() const noexcept { return access_; }

    HWND mainWindow() const noexcept { return access_->mainWindow(); }

    // See PageAccess.
    void checkAccess(bool mayAsk) const {
        // A copy: while the user is asked, the host may give the object another site.
        const SharedAccess access = access_;
        access->check(mayAsk);
    }

private:
    ComPtr<IUnknown> site_;
    SharedAccess access_;
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
    CBrowserObject() = default;
    ~CBrowserObject() = default;

    // For objects that others make: what they may from the beginning.
    void setAccess(Corvane::Com::SharedAccess access) noexcept {
        site_ = Corvane::Com::BrowserSite(std::move(access));
    }
    const Corvane::Com::SharedAccess& access() const noexcept { return site_.access(); }

    // See PageAccess.
    void checkAccess(bool mayAsk) const { site_.checkAccess(mayAsk); }

    // Owner for dialogs; null when the host is no browser.
    HWND mainWindow() const noexcept { return site_.mainWindow(); }

private:
    Corvane::Com::BrowserSite site_;
};
