#include "sites/site_pattern.h"

#include <algorithm>

namespace Corvane {
namespace {

constexpr std::wstring_view schemeEnd = L"://";
constexpr std::wstring_view wildcard = L"*";
constexpr std::wstring_view hostEnds = L"/?#:";

class SiteParser {
public:
    SiteParser(std::wstring_view text, LetterTest isLetter) : text_(text), isLetter_(isLetter) {}

    SitePattern parse() {
        readScheme();
        if (!readHost())
            site_.rest = siteParseError;
        return std::move(site_);
    }

private:
    bool isNameCharacter(wchar_t c) const {
        if (c < 0x80)
            return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9') ||
                   c == L'-' || c == L'_';
        return isLetter_(c);
    }

    void readScheme() {
        std::size_t end = 0;
        while (end < text_.size() && (isNameCharacter(text_[end]) || text_[end] == L'*'))
            ++end;
        if (text_.substr(end, schemeEnd.size()) != schemeEnd)
            return;
        site_.scheme = text_.substr(0, end);
        text_.remove_prefix(end + schemeEnd.size());
    }

    bool readHost() {
        std::size_t start = 0;
        for (;;) {
            const std::size_t end = labelEnd(start);
            const bool atEnd = end == text_.size();
            if (!atEnd && text_[end] != L'.' && hostEnds.find(text_[end]) == std::wstring_view::npos)
                return false;
            site_.labels.emplace_back(text_.substr(start, end - start));
            if (atEnd)
                return true;
            start = end + 1;
            if (text_[end] != L'.')
                return readRest(text_[end], text_.substr(start));
        }
    }

    // Where the label that begins at `start` ends. A wildcard ends its label only where it is the whole of
    // one; elsewhere it is left standing as a character that no label may end at.
    std::size_t labelEnd(std::size_t start) const {
        if (text_.substr(start, 1) == wildcard) {
            const bool isWhole = start + 1 == text_.size() || text_[start + 1] == L'.';
            return isWhole ? start + 1 : start;
        }
        std::size_t end = start;
        while (end < text_.size() && isNameCharacter(text_[end]))
            ++end;
        return end;
    }

    // What stands before "name:password@host" is not a host, however much it looks like one.
    bool readRest(wchar_t stop, std::wstring_view rest) {
        if (stop == L':' && rest.substr(0, rest.find_first_of(L"/?#")).find(L'@') != std::wstring_view::npos)
            return false;
        site_.rest = rest;
        return true;
    }

    std::wstring_view text_;
    LetterTest isLetter_;
    SitePattern site_;
};

bool isUnderstood(const SitePattern& site) {
    return site.rest != siteParseError;
}

bool namesHost(const SitePattern& site) {
    return site.labels.size() > 1 || (site.labels.size() == 1 && !site.labels.front().empty());
}

bool acceptsScheme(const SitePattern& pattern, const std::wstring& scheme) {
    return pattern.scheme.empty() || pattern.scheme == wildcard || pattern.scheme == scheme;
}

}  // namespace

SitePattern parseSite(std::wstring_view text, LetterTest isLetter) {
    return SiteParser(text, isLetter).parse();
}

bool isValidSitePattern(const SitePattern& pattern) {
    constexpr std::size_t leastLabelsWithWildcard = 3;
    if (pattern.scheme == L"file" || !isUnderstood(pattern) || !namesHost(pattern))
        return false;
    if (std::find(pattern.labels.begin() + 1, pattern.labels.end(), wildcard) != pattern.labels.end())
        return false;
    return pattern.labels.front() != wildcard || pattern.labels.size() >= leastLabelsWithWildcard;
}

bool matchesSite(const SitePattern& pattern, const SitePattern& address) {
    if (address.scheme.empty() || !isUnderstood(address) || !acceptsScheme(pattern, address.scheme))
        return false;
    std::size_t left = address.labels.size();
    for (std::size_t i = pattern.labels.size(); i > 0; --i) {
        const std::wstring& wanted = pattern.labels[i - 1];
        if (wanted == wildcard)
            return true;
        if (left == 0 || address.labels[left - 1] != wanted)
            return false;
        --left;
    }
    return left == 0;
}

bool namesOneSite(const SitePattern& address) {
    return !address.scheme.empty() && address.scheme != wildcard && isValidSitePattern(address) &&
           address.labels.front() != wildcard;
}

std::wstring siteHost(const SitePattern& site) {
    std::wstring host;
    for (const std::wstring& label : site.labels) {
        if (&label != &site.labels.front())
            host += L'.';
        host += label;
    }
    return host;
}

std::wstring sitePatternText(const SitePattern& pattern) {
    std::wstring text;
    if (!pattern.scheme.empty())
        text.append(pattern.scheme).append(schemeEnd);
    text += siteHost(pattern);
    if (!pattern.rest.empty())
        text.append(L"/").append(pattern.rest);
    return text;
}

}  // namespace Corvane
