#include "com/access/browser_object.h"

#include "core/exception.h"
#include "core/log.h"

#include <optional>
#include <utility>

namespace Corvane::Com {
namespace {

// One line, in the context of the step that failed.
void logSiteError(const std::exception_ptr& error) noexcept {
    try {
        try {
            std::rethrow_exception(error);
        } catch (const Exception& exception) {
            const std::string_view step = exception.what();
            writeLog(LogLevel::error, std::wstring(step.begin(), step.end()), fullMessage(exception));
        }
    } catch (...) {
        // The error is kept all the same.
    }
}

SharedAccess accessWithError(const std::exception_ptr& error) noexcept {
    try {
        return PageAccess::withError(error);
    } catch (...) {
        return PageAccess::ofNobody();
    }
}

}  // namespace

HRESULT BrowserSite::setSite(IUnknown* site) noexcept {
    site_ = ComPtr<IUnknown>(site);
    if (access_ == PageAccess::checked())
        return S_OK;
    // The host's code may call the object meanwhile: that of no page yet.
    SharedAccess former = std::exchange(access_, PageAccess::ofNobody());
    SharedAccess found;
    try {
        std::optional<HostingPage> page = findHostingPage(site);
        found = page ? PageAccess::of(std::move(*page)) : nullptr;
    } catch (...) {
        found = accessWithError(std::current_exception());
        logSiteError(std::current_exception());
    }
    // Where the host gave another site meanwhile, that one counts.
    if (site_.get() == site)
        access_ = found ? found : std::move(former);
    return found ? S_OK : E_FAIL;
}

HRESULT BrowserSite::getSite(REFIID iid, void** site) const noexcept {
    if (!site)
        return E_POINTER;
    *site = nullptr;
    return site_ ? site_->QueryInterface(iid, site) : E_FAIL;
}

}  // namespace Corvane::Com
