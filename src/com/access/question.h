// The question to the user whether a page's site may use the component.
#pragma once

#include "com/access/hosting_page.h"
#include "sites/site_pattern.h"

namespace Corvane::Com {

// What the lists of sites say of the page of an address.
enum class Verdict { allowed, refused, unknown };
Verdict verdictOn(const SitePattern& page);

// Asks about a page that the lists do not know, and remembers the answer as the user wishes. False when the
// user refuses. Messages of the thread are delivered while the question is open; calls that come of them may
// not ask in turn and get false, so that there is one question at a time for a thread and none is hidden
// behind another. Throws E_INVALID_DOMAIN without asking when the address does not tell the page's site whole
// (see namesOneSite), and what showing the dialog and remembering the answer throw.
bool askUser(const HostingPage& page);

}  // namespace Corvane::Com
