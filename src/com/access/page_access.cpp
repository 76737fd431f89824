#include "com/access/page_access.h"

#include "com/access/question.h"
#include "core/exception.h"
#include "core/log.h"
#include "sites/trusted_sites.h"

#include <utility>

namespace Corvane::Com {

SharedAccess PageAccess::ofNobody() noexcept {
    static const PageAccess access;
    return {SharedAccess(), &access};  // owned by nobody, so that copies count nothing
}

SharedAccess PageAccess::checked() noexcept {
    static const PageAccess access = [] {
        PageAccess allowed;
        allowed.isChecked_ = true;
        return allowed;
    }();
    return {SharedAccess(), &access};
}

SharedAccess PageAccess::of(HostingPage page) {
    const auto access = std::make_shared<PageAccess>();
    access->site_ = readSite(page.url);
    access->page_ = std::move(page);
    return access;
}

SharedAccess PageAccess::withError(std::exception_ptr error) {
    const auto access = std::make_shared<PageAccess>();
    access->error_ = std::move(error);
    return access;
}

void PageAccess::check(bool mayAsk) const {
    constexpr wchar_t context[] = L"CBrowserObject::checkAccess";
    if (isChecked_)
        return;
    if (error_)
        std::rethrow_exception(error_);
    if (page_.url.empty()) {
        writeLog(LogLevel::warning, context, L"url address is not defined");
        throw Exception(E_ACCESS_DENIED);
    }
    writeLog(LogLevel::info, context, L"url address: ", page_.url);
    const Verdict verdict = verdictOn(site_);
    const bool allowed =
        verdict == Verdict::allowed || (verdict == Verdict::unknown && mayAsk && askUser(page_));
    if (!allowed)
        throw Exception(E_ACCESS_DENIED);
}

}  // namespace Corvane::Com
