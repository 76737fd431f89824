#include "core/site_pattern.h"

#include <gtest/gtest.h>

using namespace Corvane;

namespace {

// The lower-case Cyrillic letters stand for all that the system calls letters.
bool isRussianLetter(wchar_t c) {
    return (c >= L'а' && c <= L'я') || c == L'ё';
}

SitePattern parse(const wchar_t* text) {
    return parseSite(text, isRussianLetter);
}

// "scheme", the labels, "rest", each between bars, so that an empty label shows.
std::wstring partsOf(const SitePattern& site) {
    std::wstring text = site.scheme + L"|";
    for (const std::wstring& label : site.labels) {
        text += label + L"|";
    }
    return text + site.rest;
}

}  // namespace

TEST(SitePattern, SplitsAddresses) {
    const struct {
        const wchar_t* text;
        const wchar_t* parts;
    } rows[] = {
        {L"https://www.example.org/", L"https|www|example|org|"},
        {L"http://www.example.org:8080/a?b#c", L"http|www|example|org|8080/a?b#c"},
        {L"http://h?q=x.y", L"http|h|q=x.y"},
        {L"http://h#f", L"http|h|f"},
        {L"example.org", L"|example|org|"},
        {L"example.org:80", L"|example|org|80"},
        // ':' ends a scheme only before "//".
        {L"javascript:alert(1)", L"|javascript|alert(1)"},
        {L"http:/example.org", L"|http|/example.org"},
        {L"*://example.org", L"*|example|org|"},
        {L"a-b_9*://h", L"a-b_9*|h|"},
        {L"a.b://h", L"|a|b|//h"},
        {L"name://wscript.exe", L"name|wscript|exe|"},
        {L"name://my-host_2.exe", L"name|my-host_2|exe|"},
        {L"https://почта.рф/ящик", L"https|почта|рф|ящик"},
        {L"https://127.0.0.1/x", L"https|127|0|0|1|x"},
        // Empty labels stand as they are.
        {L"", L"||"},
        {L"://h", L"|h|"},
        {L"http://", L"http||"},
        {L"http:///x", L"http||x"},
        {L"http://a..b.", L"http|a||b||"},
        // A wildcard is a whole label, and no other stop than a dot or the end follows it.
        {L"*.example.org", L"|*|example|org|"},
        {L"a.*.org", L"|a|*|org|"},
        {L"a.*", L"|a|*|"},
        {L"*", L"|*|"},
        {L"*a.org", L"|parseError"},
        {L"a*.org", L"|parseError"},
        {L"b.a*", L"|b|parseError"},
        {L"**.example.org", L"|parseError"},
        {L"http://*/x", L"http|parseError"},
        {L"a.*:80", L"|a|parseError"},
        // Everything else ends the parsing, and the label it stands in is dropped.
        {L"ex ample.org", L"|parseError"},
        {L"http://a.b c.d", L"http|a|parseError"},
        {L"http://a.b@c", L"http|a|parseError"},
        {L"http://a.b%00.c", L"http|a|parseError"},
        {L"http://a\\b", L"http|parseError"},
        {L"http://[::1]/", L"http|parseError"},
        {L"http://中.org", L"http|parseError"},
        // What stands before '@' is who logs in, not where; in a path it means nothing.
        {L"http://a.b:p@c.d/", L"http|a|b|parseError"},
        {L"http://a.b:80/p@c", L"http|a|b|80/p@c"},
        {L"http://a.b/p@c", L"http|a|b|p@c"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(partsOf(parse(row.text)), row.parts) << testing::PrintToString(row.text);
    }
}

TEST(SitePattern, EmbeddedZeroIsNotAHostCharacter) {
    using namespace std::string_view_literals;
    EXPECT_EQ(parseSite(L"http://a.b\0.c"sv, isRussianLetter).rest, siteParseError);
}

TEST(SitePattern, SaysWhichPatternsMayStandInAList) {
    const struct {
        const wchar_t* text;
        bool isValid;
    } rows[] = {
        {L"example.org", true},
        {L"localhost", true},
        {L"https://example.org", true},
        {L"*://example.org/path", true},
        {L"*.example.org", true},
        {L"https://*.a.b.c", true},
        {L"name://wscript.exe", true},
        {L"рос.рф", true},
        {L"*.org", false},
        {L"*", false},
        {L"http://*", false},
        {L"file://x", false},
        {L"file:///c:/x.html", false},
        {L"a.*.org", false},
        {L"*.*.example.org", false},
        {L"a.b.*", false},
        {L"ex ample.org", false},
        {L"a.b@c", false},
        // An empty name is the registry's default value; it would cover every local page.
        {L"", false},
        {L"https://", false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(isValidSitePattern(parse(row.text)), row.isValid) << testing::PrintToString(row.text);
    }
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
        {L"example.org", L"https://evil.net/example.org", false},
        {L"example.org", L"https://evil.net?https://example.org", false},
        // The labels are compared as they are: a dot at the end makes another host of it.
        {L"example.org", L"https://example.org./", false},
        {L"рос.рф", L"https://рос.рф/", true},
        {L"poc.рф", L"https://рос.рф/", false},
        // An address without a scheme is never trusted.
        {L"example.org", L"example.org", false},
        {L"example.org", L"://example.org", false},
        // Nor is one whose host was not understood, though the labels read until then would match.
        {L"example.org", L"https://example.org.@evil.net/", false},
        {L"example.org", L"https://example.org:x@evil.net/", false},
        {L"example.org", L"https://example.org.%65vil.net/", false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(matchesSite(parse(row.pattern), parse(row.address)), row.matches)
            << testing::PrintToString(row.pattern) << " and " << testing::PrintToString(row.address);
    }
}

TEST(SitePattern, TextOfAPatternIsReadBackTheSame) {
    const struct {
        const wchar_t* address;
        const wchar_t* host;
        const wchar_t* text;
    } rows[] = {
        {L"https://www.example.org", L"www.example.org", L"https://www.example.org"},
        {L"https://example.org:8080", L"example.org", L"https://example.org/8080"},
        {L"example.org", L"example.org", L"example.org"},
        {L"name://wscript.exe", L"wscript.exe", L"name://wscript.exe"},
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
