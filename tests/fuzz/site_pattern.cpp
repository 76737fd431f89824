// Splits arbitrary text into an address and a pattern and holds the results to what must be true of any.
#include "core/site_pattern.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace Corvane;

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

bool isLetter(wchar_t c) {
    return c >= 0xC0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::wstring text(data, data + size);
    const std::size_t middle = text.find(L'\n');
    const SitePattern pattern = parseSite(std::wstring_view(text).substr(0, middle), isLetter);
    const SitePattern address = parseSite(
        middle == std::wstring::npos ? std::wstring_view() : std::wstring_view(text).substr(middle + 1),
        isLetter);

    for (const std::wstring& label : pattern.labels) {
        require(label == L"*" || label.find_first_of(L"*./:?#@ %\\") == std::wstring::npos);
    }
    if (isValidSitePattern(pattern)) {
        // What is written to the registry is valid and means the same when it is read again.
        const SitePattern& page = pattern;
        SitePattern stored = page;
        stored.rest.clear();
        stored = parseSite(sitePatternText(stored), isLetter);
        require(isValidSitePattern(stored) && stored.scheme == page.scheme && stored.labels == page.labels);
        require(page.scheme.empty() || matchesSite(stored, page));
    }
    if (matchesSite(pattern, address)) {
        require(!address.scheme.empty() && address.rest != siteParseError);
    }
    return 0;
}
