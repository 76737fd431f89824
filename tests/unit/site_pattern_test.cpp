#include "sites/site_pattern.h"

#include "binary/utf.h"
#include "support.h"

using namespace Corvane;
using namespace Corvane::Test;

namespace {

// The lower-case Cyrillic letters stand for all that the system calls letters.
SitePattern parse(std::wstring_view text) {
    return parseSite(text, [](wchar_t c) { return (c >= L'а' && c <= L'я') || c == L'ё'; });
}

// "scheme", the labels, "rest", each between bars, so that an empty label shows.
std::wstring partsOf(const SitePattern& site) {
    std::wstring text = site.scheme + L"|";
    for (const std::wstring& label : site.labels)
        text += label + L"|";
    return text + site.rest;
}

TEST(SitePattern, ReadsAndMatchesAsDocumented) {
    for (const auto& row : readTable("text/sites.txt", 4)) {
        SCOPED_TRACE(row[0] + ' ' + row[1] + ' ' + row[2]);
        const SitePattern site = parse(utf8ToWide(bytesOf(row[1])).value());
        const std::wstring second = utf8ToWide(bytesOf(row[2])).value();
        if (row[0] == "parts") {
            EXPECT_EQ(partsOf(site), second);
        } else if (row[0] == "list") {
            EXPECT_EQ(isValidSitePattern(site), row[2] == "yes");
        } else if (row[0] == "one") {
            EXPECT_EQ(namesOneSite(site), row[2] == "yes");
        } else if (row[0] == "match") {
            EXPECT_EQ(matchesSite(site, parse(second)), row[3] == "yes");
        } else {
            EXPECT_EQ(row[0], "text");
            EXPECT_EQ(sitePatternText(site), second);
            EXPECT_EQ(partsOf(parse(second)), partsOf(site)) << "read back";
            EXPECT_EQ(siteHost(site), wide(row[3]));
        }
    }
}

TEST(SitePattern, WhatNoLineOfTextHolds) {
    EXPECT_EQ(partsOf(parse({L"http://a.b\0.c", 13})), L"http|a|parseError") << "a zero";
    EXPECT_FALSE(namesOneSite(parse(L"https://bank.example.\n.evil.example/"))) << "two lines";
    EXPECT_FALSE(isValidSitePattern(SitePattern{L"https", {}, L""})) << "no label at all";
}

}  // namespace
