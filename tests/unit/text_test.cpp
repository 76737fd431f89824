// The system's conversions of text.
#include "core/text.h"

#include "binary/utf.h"
#include "binary/xml_text.h"
#include "support.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;
using namespace std::string_literals;

namespace {

TEST(Text, CodePages) {
    const std::wstring text = L"Привет\0мир"s;
    const std::string bytes = "\xCF\xF0\xE8\xE2\xE5\xF2\0\xEC\xE8\xF0"s;
    EXPECT_EQ(wideToMulti(1251, text), bytes);
    EXPECT_EQ(multiToWide(1251, bytes), text);
    EXPECT_EQ(toUtf8(L"\xD83D\xDE00"), "\xF0\x9F\x98\x80");
    EXPECT_EQ(multiToWide(99999, ""s), L"") << "an empty text does not reach the system";
    EXPECT_EQ(errorCode([] { multiToWide(99999, "a"s); }), E_ANSI_TO_WIDE.code);
    EXPECT_EQ(errorCode([] { wideToMulti(99999, L"a"s); }), E_WIDE_TO_ANSI.code);
    EXPECT_THROW(multiToWide(1251, static_cast<const char*>(nullptr)), std::invalid_argument);
}

TEST(XmlText, ConvertsCodePagesWithTheSystem) {
    const std::wstring expected = utf8ToWide(readTestData("text/notice.xml")).value();
    for (const std::string encoding : {"WINDOWS-1251", "KOI8-R", "IBM866"}) {
        const std::string text = readTestText("text/notice." + encoding + ".xml");
        EXPECT_EQ(Binary::toXmlString(bytesOf(text)), expected) << encoding;
        const std::string start = "<?xml version='1.0' encoding='" + encoding + "'?>";
        EXPECT_EQ(Binary::toXmlString(bytesOf(start + text)), wide(start) + expected) << encoding;
    }
}

}  // namespace
