// Whether the page that an object belongs to may do what reaches beyond the object.
#pragma once

#include "com/access/hosting_page.h"
#include "sites/site_pattern.h"

#include <exception>
#include <memory>

namespace Corvane::Com {

class PageAccess;

// Objects that are made from one another belong to one page. Never null.
using SharedAccess = std::shared_ptr<const PageAccess>;

// Does not change, holds nothing of the host's, and may go on any thread.
class PageAccess {
public:
    // Of an object that no page has been told of: refused.
    static SharedAccess ofNobody() noexcept;
    // Of what a service's method made, or a method of an object that only services make: the page was
    // checked when that method began, and is not asked about again.
    static SharedAccess checked() noexcept;
    // Of a page. Both may throw std::bad_alloc.
    static SharedAccess of(HostingPage page);
    // Of a page that could not be found, for this reason.
    static SharedAccess withError(std::exception_ptr error);

    // Returns when the page may. If `mayAsk`, the user may be asked; not while a question to the user is open
    // on this thread already. Throws Exception E_ACCESS_DENIED, the error of withError(), and what
    // remembering the user's answer may throw. On the page's thread.
    void check(bool mayAsk) const;

    // The browser's, to own dialogs; null when the host is none.
    HWND mainWindow() const noexcept { return page_.mainWindow; }

private:
    HostingPage page_;
    SitePattern site_;  // of its address
    std::exception_ptr error_;
    bool isChecked_ = false;
};

}  // namespace Corvane::Com
