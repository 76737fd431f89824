#include "binary/xml_encoding.h"

#include "binary/encoding_names.h"
#include "binary/utf.h"
#include "core/errors.h"
#include "core/exception.h"
#include "test_data.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace std::string_literals;

namespace {

std::span<const std::uint8_t> asBytes(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// ASCII text as units of UTF-16 or UTF-32.
std::string spread(std::string_view text, std::size_t unitSize, std::endian order) {
    std::string bytes;
    for (const char character : text) {
        std::string unit(unitSize, '\0');
        (order == std::endian::little ? unit.front() : unit.back()) = character;
        bytes += unit;
    }
    return bytes;
}

std::string utf16Le(std::string_view text) {
    return spread(text, 2, std::endian::little);
}

std::string utf16Be(std::string_view text) {
    return spread(text, 2, std::endian::big);
}

std::string declared(std::string_view attributes) {
    return "<?xml version=\"1.0\" " + std::string(attributes) + "?><a/>";
}

// Stands for the system's conversion: says which code page was asked for.
std::wstring nameCodePage(std::uint32_t codePage, std::string_view) {
    return L"code page " + std::to_wstring(codePage);
}

const std::string markUtf8 = "\xEF\xBB\xBF";
const std::string markLe = "\xFF\xFE";
const std::string markBe = "\xFE\xFF";

}  // namespace

TEST(XmlEncoding, IsFoundInTheBytes) {
    const std::string plain = "<a/>";
    const std::string utf16 = declared("encoding='UTF-16'");
    const struct {
        std::string document;
        std::uint32_t codePage;
        std::size_t markSize;
    } rows[] = {
        {plain, 65001, 0},
        {"\n <!-- no declaration -->" + plain, 65001, 0},
        {"<?xml-stylesheet href='encoding=\"koi8-r\"'?>" + plain, 65001, 0},
        {"<\xD0\xB0/>", 65001, 0},
        {declared(""), 65001, 0},
        {markUtf8 + plain, 65001, 3},
        {markUtf8 + declared("encoding='utf-8'"), 65001, 3},
        {markLe + utf16Le(utf16), 1200, 2},
        {markLe + utf16Le(plain), 1200, 2},
        {markBe + utf16Be(declared("encoding='utf-16BE'")), 1201, 2},
        {utf16Le(utf16), 1200, 0},
        {utf16Be(utf16), 1201, 0},
        {utf16Be(plain), 1201, 0},
        {"\xFF\xFE\0\0"s + spread(declared("encoding='UTF-32'"), 4, std::endian::little), 12000, 4},
        {"\0\0\xFE\xFF"s + spread(plain, 4, std::endian::big), 12001, 4},
        {spread(plain, 4, std::endian::big), 12001, 0},
        {spread(plain, 4, std::endian::little), 12000, 0},
        {declared("encoding=\"windows-1251\""), 1251, 0},
        {declared("encoding='Windows-1251' standalone='yes' "), 1251, 0},
        {"<?xml\tversion = '1.1'\r\n encoding\n=\n\"KOI8-R\"\n?>\n" + plain, 20866, 0},
        {declared("standalone=\"no\""), 65001, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.document));
        const XmlEncoding encoding = findXmlEncoding(asBytes(row.document));
        EXPECT_EQ(encoding.codePage, row.codePage);
        EXPECT_EQ(encoding.markSize, row.markSize);
    }
}

TEST(XmlEncoding, NamesTheFaultOfABadDocument) {
    const struct {
        std::string document;
        const ErrorDescriptor& error;
    } rows[] = {
        {"", E_XML_INVALID},
        {markUtf8, E_XML_INVALID},
        {" \r\n", E_XML_INVALID},
        {"text <a/>", E_XML_INVALID},
        {"<", E_XML_INVALID},
        {"< a/>", E_XML_INVALID},
        {" " + declared(""), E_XML_INVALID},        // a declaration stands first or not at all
        {declared("") + "\x81\x81", E_XML_DECODE},  // no name, not UTF-8, and like no language
        {"<?xml version='1.0'?>", E_XML_INVALID},   // nothing follows
        {"<?xml?><a/>", E_XML_INVALID},
        {"<?xml encoding='utf-8'?><a/>", E_XML_INVALID},
        {"<?xml version='2.0'?><a/>", E_XML_INVALID},
        {"<?xml version='1.'?><a/>", E_XML_INVALID},
        {"<?xml version='1.0\"?><a/>", E_XML_INVALID},
        {"<?xml version=1.0?><a/>", E_XML_INVALID},
        {"<?xml version='1.0'", E_XML_INVALID},
        {"<?xml version='1.0'encoding='utf-8'?><a/>", E_XML_INVALID},
        {declared("standalone='yes' encoding='utf-8'"), E_XML_INVALID},
        {declared("standalone='maybe'"), E_XML_INVALID},
        {declared("Encoding='utf-8'"), E_XML_INVALID},
        {declared("encoding='utf-8' encoding='utf-8'"), E_XML_INVALID},
        {"<?xml version='1.0'?><?xml version='1.0'?><a/>", E_XML_INVALID},
        {declared("encoding=''"), E_XML_ENCODING},
        {declared("encoding='1251'"), E_XML_ENCODING},
        {declared("encoding='utf 8'"), E_XML_ENCODING},
        {declared("encoding='klingon'"), E_XML_ENCODING},
        {declared("encoding='utf-7'"), E_XML_ENCODING},
        {declared("encoding='utf-16'"), E_XML_ENCODING},
        {markUtf8 + declared("encoding='windows-1251'"), E_XML_ENCODING},
        {markLe + utf16Le(declared("encoding='utf-8'")), E_XML_ENCODING},
        {markLe + utf16Le(declared("encoding='utf-16be'")), E_XML_ENCODING},
        {utf16Be(declared("encoding='koi8-r'")), E_XML_ENCODING},
        {declared("encoding='utf-8'") + "\xFF", E_XML_ENCODING},
        {declared("encoding='us-ascii'") + "\x80", E_XML_ENCODING},
        {markUtf8 + "<a>\xC0", E_XML_ENCODING},
        {markBe + utf16Be("<a/>") + "\xDC\x01", E_XML_ENCODING},
        {utf16Le("<a/>") + "!", E_XML_ENCODING},
        {spread("<a/>", 4, std::endian::big) + "!", E_XML_ENCODING},
        {"\x4C\x6F\xA7\x94\x93", E_XML_DECODE},  // EBCDIC
        {"\0\0\xFF\xFE"s, E_XML_DECODE},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.document));
        try {
            static_cast<void>(decodeXml(asBytes(row.document), nameCodePage));
            ADD_FAILURE() << "accepted";
        } catch (const Exception& error) {
            EXPECT_STREQ(error.what(), row.error.name);
        }
    }
}

TEST(XmlEncoding, DecodesToTextWithoutTheMark) {
    const auto expected = utf8ToWide(readTestData("text/notice.xml"));
    ASSERT_TRUE(expected);
    for (const char* const encoding : {"UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE"}) {
        const Bytes document = readTestData("text/notice."s + encoding + ".xml");
        EXPECT_EQ(decodeXml(document, nameCodePage), *expected) << encoding;
    }
    EXPECT_EQ(decodeXml(asBytes(markUtf8 + "<a/>"), nameCodePage), L"<a/>");
    EXPECT_EQ(decodeXml(asBytes(declared("encoding='ascii'")), nameCodePage),
              L"<?xml version=\"1.0\" encoding='ascii'?><a/>");
}

TEST(XmlEncoding, RecognizesRussianTextThatDeclaresNothing) {
    EXPECT_EQ(decodeXml(readTestData("text/notice.WINDOWS-1251.xml"), nameCodePage), L"code page 1251");
    EXPECT_EQ(decodeXml(readTestData("text/notice.KOI8-R.xml"), nameCodePage), L"code page 20866");
    EXPECT_EQ(decodeXml(readTestData("text/notice.IBM866.xml"), nameCodePage), L"code page 866");
}

TEST(EncodingNames, AreMappedToCodePagesOfWindows) {
    const struct {
        const char* name;
        std::uint32_t codePage;  // 0: unknown
    } rows[] = {
        {"UTF-8", 65001},
        {"utf8", 65001},
        {"US-ASCII", 20127},
        {"windows-1250", 1250},
        {"CP1251", 1251},
        {"x-cp1251", 1251},
        {"windows-874", 874},
        {"cp866", 866},
        {"IBM866", 866},
        {"ibm437", 437},
        {"koi8-r", 20866},
        {"KOI8-U", 21866},
        {"ISO-8859-1", 28591},
        {"iso_8859-5", 28595},
        {"ISO-8859-15", 28605},
        {"iso-8859-8-i", 38598},
        {"gb2312", 936},
        {"GB18030", 54936},
        {"Shift_JIS", 932},
        {"EUC-JP", 20932},
        {"euc-kr", 949},
        {"Big5", 950},
        {"ISO-2022-JP", 50220},
        {"macintosh", 10000},
        {"windows-1259", 0},
        {"windows-", 0},
        {"windows-01251", 0},
        {"windows-1251x", 0},
        {"iso-8859-12", 0},
        {"utf-7", 0},
        {"", 0},
        {"cp99999999999", 0},
    };
    for (const auto& row : rows) {
        const auto encoding = findEncoding(row.name);
        EXPECT_EQ(encoding ? encoding->codePage : 0, row.codePage) << row.name;
    }
}
