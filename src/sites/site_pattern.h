// Addresses of pages and patterns of trusted sites: one form for both, and how they compare.
//
// Pure text work. The rules are strict on purpose: an address that was not understood whole matches no
// pattern, so that a mistake here refuses a site and never admits one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Corvane {

// A parsed address.
struct SitePattern {
    std::wstring scheme;               // lower case, without "://"; empty when the text has none
    std::vector<std::wstring> labels;  // the host split at its dots, left to right
    std::wstring rest;                 // after the character that ended the host, or siteParseError
};

// What `rest` holds when the host was not understood. Its capital letter keeps it apart from the path of
// a lower-cased address.
inline constexpr wchar_t siteParseError[] = L"parseError";

// Says of a character beyond ASCII whether a host name may contain it as a letter or digit.
using LetterTest = bool (*)(wchar_t);

// Splits a lower-cased address. Never fails: what it cannot read is marked by siteParseError, with the
// labels collected until then.
SitePattern parseSite(std::wstring_view text, LetterTest isLetter);

// Whether the pattern may stand in a list: it names a host, is not a local file, and a wildcard is only
// the first of at least three labels.
bool isValidSitePattern(const SitePattern& pattern);

// Whether `pattern`, valid or not, covers the page at `address`. The port and the path play no part.
bool matchesSite(const SitePattern& pattern, const SitePattern& address);

// Whether an address tells whole of which one site its page is: what was not understood, has no scheme (as
// about:blank), is a local file, or holds a wildcard does not. Only then the host may be shown as the page's,
// and the pattern of the address covers no other site.
bool namesOneSite(const SitePattern& address);

// The host: the labels joined by dots.
std::wstring siteHost(const SitePattern& site);

// The text from which the same pattern is parsed again.
std::wstring sitePatternText(const SitePattern& pattern);

}  // namespace Corvane
