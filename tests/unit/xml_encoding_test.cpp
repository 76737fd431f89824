#include "binary/xml_encoding.h"

#include "binary/encoding_names.h"
#include "binary/utf.h"
#include "support.h"

#include <gtest/gtest.h>

#include <bit>

using namespace Corvane;
using namespace Corvane::Test;
using namespace std::string_literals;
using enum std::endian;

namespace {

// ASCII text as units of UTF-16 or UTF-32.
std::string spread(std::string_view text, std::size_t unitSize, std::endian order) {
    std::string bytes;
    for (const char character : text) {
        std::string unit(unitSize, '\0');
        (order == little ? unit.front() : unit.back()) = character;
        bytes += unit;
    }
    return bytes;
}

std::string declared(std::string_view attributes) {
    return "<?xml version=\"1.0\" " + std::string(attributes) + "?><a/>";
}

// With a conversion of the system's that only says which code page was asked for.
std::wstring decode(const Bytes& document) {
    return decodeXml(document, [](std::uint32_t codePage, std::string_view) {
        return L"code page " + std::to_wstring(codePage);
    });
}

// The name of the error with which a document is refused.
std::string refusalOf(std::string_view document) {
    try {
        decode(bytesOf(document));
        return "accepted";
    } catch (const Exception& error) {
        return error.what();
    }
}

const std::string plain = "<a/>";
const std::string utf16 = declared("encoding='UTF-16'");
const std::string markUtf8 = "\xEF\xBB\xBF";
const std::string markLe = "\xFF\xFE";
const std::string markBe = "\xFE\xFF";

TEST(XmlEncoding, IsFoundInTheBytes) {
    const struct {
        std::string document;
        std::uint32_t codePage;
        std::size_t markSize;
    } rows[] = {
        {plain, 65001, 0},
        {"\n <!-- no declaration -->" + plain, 65001, 0},
        {"<?xml-stylesheet href='encoding=\"koi8-r\"'?>" + plain, 65001, 0},
        {"<\xD0\xB0/>", 65001, 0},
        {declared("standalone=\"no\""), 65001, 0},
        {markUtf8 + plain, 65001, 3},
        {markUtf8 + declared("encoding='utf-8'"), 65001, 3},
        {markLe + spread(utf16, 2, little), 1200, 2},
        {markLe + spread(plain, 2, little), 1200, 2},
        {markBe + spread(declared("encoding='utf-16BE'"), 2, big), 1201, 2},
        {spread(utf16, 2, little), 1200, 0},
        {spread(utf16, 2, big), 1201, 0},
        {spread(plain, 2, big), 1201, 0},
        {"\xFF\xFE\0\0"s + spread(declared("encoding='UTF-32'"), 4, little), 12000, 4},
        {"\0\0\xFE\xFF"s + spread(plain, 4, big), 12001, 4},
        {spread(plain, 4, big), 12001, 0},
        {spread(plain, 4, little), 12000, 0},
        {declared("encoding='Windows-1251' standalone='yes' "), 1251, 0},
        {"<?xml\tversion = '1.1'\r\n encoding\n=\n\"KOI8-R\"\n?>\n" + plain, 20866, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.document));
        const XmlEncoding encoding = findXmlEncoding(bytesOf(row.document));
        EXPECT_EQ(encoding.codePage, row.codePage);
        EXPECT_EQ(encoding.markSize, row.markSize);
    }
}

TEST(XmlEncoding, NamesTheFaultOfABadDocument) {
    for (const auto& row : readTable("text/bad_documents.txt", 2))
        EXPECT_EQ(refusalOf(row[1]), row[0]) << row[1];
}

TEST(XmlEncoding, NamesTheFaultOfBadBytes) {
    const struct {
        const char* error;
        std::string document;
    } rows[] = {
        {"E_XML_INVALID", ""},
        {"E_XML_INVALID", " \r\n"},
        {"E_XML_INVALID", markUtf8},
        // No name, not UTF-8, and like no language; EBCDIC; UTF-32 in an unusual byte order
        {"E_XML_DECODE", declared("") + "\x81\x81"},
        {"E_XML_DECODE", "\x4C\x6F\xA7\x94\x93"},
        {"E_XML_DECODE", "\0\0\xFF\xFE"s},
        // A name against the mark, against the units, and against the bytes
        {"E_XML_ENCODING", markUtf8 + declared("encoding='windows-1251'")},
        {"E_XML_ENCODING", markLe + spread(declared("encoding='utf-8'"), 2, little)},
        {"E_XML_ENCODING", markLe + spread(declared("encoding='utf-16be'"), 2, little)},
        {"E_XML_ENCODING", spread(declared("encoding='koi8-r'"), 2, big)},
        {"E_XML_ENCODING", declared("encoding='utf-8'") + "\xFF"},
        {"E_XML_ENCODING", declared("encoding='us-ascii'") + "\x80"},
        // Bytes that are not what the mark or the units promise
        {"E_XML_ENCODING", markUtf8 + "<a>\xC0"},
        {"E_XML_ENCODING", markBe + spread(plain, 2, big) + "\xDC\x01"},
        {"E_XML_ENCODING", spread(plain, 2, little) + "!"},
        {"E_XML_ENCODING", spread(plain, 4, big) + "!"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(refusalOf(row.document), row.error) << testing::PrintToString(row.document);
}

TEST(XmlEncoding, DecodesToTextWithoutTheMark) {
    const std::wstring expected = utf8ToWide(readTestData("text/notice.xml")).value();
    for (const char* const encoding : {"UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE"})
        EXPECT_EQ(decode(readTestData("text/notice."s + encoding + ".xml")), expected) << encoding;
    EXPECT_EQ(decode(bytesOf(markUtf8 + plain)), L"<a/>");
    EXPECT_EQ(decode(bytesOf(declared("encoding='ascii'"))), wide(declared("encoding='ascii'")));
}

TEST(XmlEncoding, RecognizesRussianTextThatDeclaresNothing) {
    EXPECT_EQ(decode(readTestData("text/notice.WINDOWS-1251.xml")), L"code page 1251");
    EXPECT_EQ(decode(readTestData("text/notice.KOI8-R.xml")), L"code page 20866");
    EXPECT_EQ(decode(readTestData("text/notice.IBM866.xml")), L"code page 866");
}

TEST(EncodingNames, AreMappedToCodePagesOfWindows) {
    for (const auto& row : readTable("text/encoding_names.txt", 2)) {
        const auto encoding = findEncoding(row[0]);
        EXPECT_EQ(std::to_string(encoding ? encoding->codePage : 0), row[1]) << row[0];
    }
    EXPECT_FALSE(findEncoding(""));
}

}  // namespace
