#include "core/site_pattern.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace std::string_view_literals;

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

TEST(SitePattern, SplitsAddresses) {
    const struct {
        std::wstring_view text;
        const wchar_t* parts;
    } rows[] = {
        {L"http://www.example.org:8080/a?b#c", L"http|www|example|org|8080/a?b#c"},
        {L"http://h?q=x.y", L"http|h|q=x.y"},
        {L"http://h#f", L"http|h|f"},
        {L"example.org", L"|example|org|"},
        // ':' ends a scheme only before "//".
        {L"javascript:alert(1)", L"|javascript|alert(1)"},
        {L"http:/example.org", L"|http|/example.org"},
        {L"a-b_9*://h", L"a-b_9*|h|"},
        {L"a.b://h", L"|a|b|//h"},
        {L"name://my-host_2.exe", L"name|my-host_2|exe|"},
        {L"https://почта.рф/ящик", L"https|почта|рф|ящик"},
        {L"https://127.0.0.1/x", L"https|127|0|0|1|x"},
        // Empty labels stand as they are.
        {L"", L"||"},
        {L"://h", L"|h|"},
        {L"http:///x", L"http||x"},
        {L"http://a..b.", L"http|a||b||"},
        // A wildcard is a whole label, and no other stop than a dot or the end follows it.
        {L"*.example.org", L"|*|example|org|"},
        {L"a.*.org", L"|a|*|org|"},
        {L"*", L"|*|"},
        {L"*a.org", L"|parseError"},
        {L"b.a*", L"|b|parseError"},
        {L"**.example.org", L"|parseError"},
        {L"http://*/x", L"http|parseError"},
        {L"a.*:80", L"|a|parseError"},
        // Everything else ends the parsing, and the label it stands in is dropped.
        {L"http://a.b c.d", L"http|a|parseError"},
        {L"http://a.b@c", L"http|a|parseError"},
        {L"http://a.b%00.c", L"http|a|parseError"},
        {L"http://a.b\0.c"sv, L"http|a|parseError"},
        {L"http://a\\b", L"http|parseError"},
        {L"http://[::1]/", L"http|parseError"},
        {L"http://中.org", L"http|parseError"},
        // What stands before '@' is who logs in, not where; in a path it means nothing.
        {L"http://a.b:p@c.d/", L"http|a|b|parseError"},
        {L"http://a.b:80/p@c", L"http|a|b|80/p@c"},
        {L"http://a.b/p@c", L"http|a|b|p@c"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(partsOf(parse(row.text)), row.parts) << testing::PrintToString(row.text);
}

TEST(SitePattern, SaysWhichPatternsMayStandInAList) {
    for (const auto* text : {L"example.org", L"localhost", L"*://example.org/path", L"*.example.org",
                             L"https://*.a.b.c", L"name://wscript.exe", L"рос.рф"})
        EXPECT_TRUE(isValidSitePattern(parse(text))) << testing::PrintToString(text);
    // The empty name, which is the registry's default value, would cover every local page.
    for (const auto* text : {L"*.org", L"*", L"http://*", L"file://x", L"file:///c:/x.html", L"a.*.org",
                             L"*.*.example.org", L"a.b.*", L"ex ample.org", L"a.b@c", L"", L"https://"})
        EXPECT_FALSE(isValidSitePattern(parse(text))) << testing::PrintToString(text);
    EXPECT_FALSE(isValidSitePattern(SitePattern{L"https", {}, L""})) << "no label at all";
}

TEST(SitePattern, MatchesPagesAgainstPatterns) {
    const struct {
        const wchar_t* pattern;
        const wchar_t* address;
        bool matches;
    } rows[] = {
        {L"*.example.org", L"https://example.org/", true},
        {L"*.example.org", L"http://a.b.example.org:8080/x", true},
        {L"*.example.org", L"https://badexample.org", false},
        {L"*.example.org", L"https://org", false},
        {L"https://example.org", L"https://example.org/path", true},
        {L"https://example.org", L"http://example.org", false},
        {L"https://example.org", L"https://www.example.org", false},
        {L"www.example.org", L"https://example.org", false},
        {L"example.org:8080/x", L"https://example.org/y", true},
        {L"*://example.org", L"ftp://example.org", true},
        {L"h*://example.org", L"http://example.org", false},
        {L"name://wscript.exe", L"name://wscript.exe", true},
        {L"name://wscript.exe", L"name://cscript.exe", false},
        {L"example.org", L"https://example.org.evil.net/", false},
        {L"example.org", L"https://evil.net?https://example.org", false},
        // The labels are compared as they are: a dot at the end makes another host of it.
        {L"example.org", L"https://example.org./", false},
        {L"poc.рф", L"https://рос.рф/", false},
        // An address without a scheme is never trusted.
        {L"example.org", L"example.org", false},
        {L"example.org", L"://example.org", false},
        // Nor is one whose host was not understood, though the labels read until then would match.
        {L"example.org", L"https://example.org:x@evil.net/", false},
        {L"example.org", L"https://example.org.%65vil.net/", false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(matchesSite(parse(row.pattern), parse(row.address)), row.matches)
            << testing::PrintToString(row.pattern) << " and " << testing::PrintToString(row.address);
}

TEST(SitePattern, TextOfAPatternIsReadBackTheSame) {
    const struct {
        const wchar_t* address;
        const wchar_t* host;
        const wchar_t* text;
    } rows[] = {
        {L"https://example.org:8080", L"example.org", L"https://example.org/8080"},
        {L"example.org", L"example.org", L"example.org"},
        {L"http://a..b.", L"a..b.", L"http://a..b."},
        {L"", L"", L""},
    };
    for (const auto& row : rows) {
        const SitePattern site = parse(row.address);
        EXPECT_EQ(siteHost(site), row.host);
        EXPECT_EQ(sitePatternText(site), row.text);
        EXPECT_EQ(partsOf(parse(row.text)), partsOf(site));
    }
}

}  // namespace
