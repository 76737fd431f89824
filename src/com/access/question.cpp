#include "com/access/question.h"

#include "com/runtime/module.h"
#include "core/exception.h"
#include "core/lock.h"
#include "core/log.h"
#include "gui/dialog_with_check_box.h"
#include "sites/trusted_sites.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace Corvane::Com {
namespace {

using Choice = Gui::DialogWithCheckBox::Choice;

// The threads that have a question open. No thread-local variable: the runtime would keep memory for each
// thread that ever asked.
class OpenQuestion {
public:
    // Throws std::bad_alloc.
    OpenQuestion() {
        const std::lock_guard guard(mutex);
        isFirst_ = std::find(threads.begin(), threads.end(), thread_) == threads.end();
        if (isFirst_)
            threads.push_back(thread_);
    }
    ~OpenQuestion() {
        const std::lock_guard guard(mutex);
        if (isFirst_)
            std::erase(threads, thread_);
    }
    OpenQuestion(const OpenQuestion&) = delete;
    OpenQuestion& operator=(const OpenQuestion&) = delete;

    // Whether the thread had none open before.
    bool isFirst() const noexcept { return isFirst_; }

private:
    inline static constinit SharedMutex mutex;
    inline static constinit std::vector<DWORD> threads;

    const DWORD thread_ = ::GetCurrentThreadId();
    bool isFirst_ = false;
};

bool remember(Choice choice, const std::wstring& url) {
    SessionTrustedSites& session = SessionTrustedSites::instance();
    switch (choice) {
        case Choice::allow:
            session.add(url, false);
            return true;
        case Choice::allowAndRemember:
            session.addToRegistry(url);
            return true;
        case Choice::refuseAndRemember:
            session.add(url, true);
            return false;
        case Choice::refuse:
            break;
    }
    return false;
}

}  // namespace

Verdict verdictOn(const SitePattern& page) {
    const SessionTrustedSites& session = SessionTrustedSites::instance();
    if (RegTrustedSites().isTrusted(page) || session.isTrusted(page))
        return Verdict::allowed;
    return session.reject(page) ? Verdict::refused : Verdict::unknown;
}

bool askUser(const HostingPage& page) {
    // What would be shown is not the page's site, and no answer could be kept.
    const SitePattern site = readSite(page.url);
    if (!namesOneSite(site))
        throw Exception(E_INVALID_DOMAIN);
    const OpenQuestion question;
    if (!question.isFirst()) {
        writeLog(LogLevel::warning, L"CBrowserObject::checkAccess", L"another question is open");
        return false;
    }
    // Another thread's question may have been answered since the caller looked.
    if (const Verdict verdict = verdictOn(site); verdict != Verdict::unknown)
        return verdict == Verdict::allowed;
    const Gui::DialogWithCheckBox dialog(siteHost(site));
    return remember(dialog.get(Module::instance(), page.mainWindow), page.url);
}

}  // namespace Corvane::Com
