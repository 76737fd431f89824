// Splits arbitrary text into an address and a pattern and holds the results to what must be true of any.
#include "sites/site_pattern.h"
#include "fuzz.h"

using namespace Corvane;

void fuzz(Input input) {
    const auto parse = [](std::wstring_view text) {
        return parseSite(text, [](wchar_t c) { return c >= 0xC0; });
    };
    const std::wstring text(input.begin(), input.end());
    const std::size_t middle = std::min(text.find(L'\n'), text.size());
    const SitePattern pattern = parse(text.substr(0, middle));
    const SitePattern address = parse(middle == text.size() ? L"" : text.substr(middle + 1));

    for (const std::wstring& label : pattern.labels)
        require(label == L"*" || label.find_first_of(L"*./:?#@ %\\") == std::wstring::npos);
    if (isValidSitePattern(pattern)) {
        // What is written to the registry is valid and means the same when it is read again.
        const SitePattern stored = parse(sitePatternText({pattern.scheme, pattern.labels, L""}));
        require(isValidSitePattern(stored) && stored.scheme == pattern.scheme &&
                stored.labels == pattern.labels);
        const SitePattern& page = pattern;
        require(page.scheme.empty() || matchesSite(stored, page));
    }
    require(!matchesSite(pattern, address) || (!address.scheme.empty() && address.rest != siteParseError));
}
