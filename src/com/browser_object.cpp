#include "com/browser_object.h"

#include "com/module.h"
#include "core/exception.h"
#include "core/log.h"
#include "core/trusted_sites.h"
#include "gui/dialog_with_check_box.h"

#include <utility>

namespace Corvane::Com {
namespace {

using Choice = Gui::DialogWithCheckBox::Choice;

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

// Shows the dialog and remembers the answer as it says.
bool askUser(const HostingPage& page) {
    SessionTrustedSites& session = SessionTrustedSites::instance();
    const Gui::DialogWithCheckBox dialog(siteHost(readSite(page.url)));
    switch (dialog.get(Module::instance(), page.mainWindow)) {
        case Choice::allow:
            session.add(page.url, false);
            return true;
        case Choice::allowAndRemember:
            session.addToRegistry(page.url);
            return true;
        case Choice::refuseAndRemember:
            session.add(page.url, true);
            return false;
        case Choice::refuse:
            break;
    }
    return false;
}

}  // namespace

HRESULT BrowserSite::setSite(IUnknown* site) noexcept {
    site_ = ComPtr<IUnknown>(site);
    try {
        std::optional<HostingPage> page = findHostingPage(site);
        if (!page) {
            return E_FAIL;
        }
        page_ = std::move(*page);
        siteError_ = nullptr;
    } catch (...) {
        page_ = {};
        siteError_ = std::current_exception();
        logSiteError(siteError_);
    }
    return S_OK;
}

HRESULT BrowserSite::getSite(REFIID iid, void** site) const noexcept {
    if (!site) {
        return E_POINTER;
    }
    *site = nullptr;
    return site_ ? site_->QueryInterface(iid, site) : E_FAIL;
}

void BrowserSite::checkAccess(bool mayAsk) const {
    constexpr wchar_t context[] = L"CBrowserObject::checkAccess";
    if (siteError_) {
        std::rethrow_exception(siteError_);
    }
    // A copy: while the dialog is open, the host may give the object another site.
    const HostingPage page = page_;
    if (page.url.empty()) {
        writeLog(LogLevel::warning, context, L"url address is not defined");
        throw Exception(E_ACCESS_DENIED);
    }
    writeLog(LogLevel::info, context, L"url address: ", page.url);

    const SessionTrustedSites& session = SessionTrustedSites::instance();
    if (RegTrustedSites().isTrusted(page.url) || session.isTrusted(page.url)) {
        return;
    }
    if (session.reject(page.url) || !mayAsk || !askUser(page)) {
        throw Exception(E_ACCESS_DENIED);
    }
}

}  // namespace Corvane::Com
