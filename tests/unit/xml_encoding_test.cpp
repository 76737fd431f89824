#include "binary/xml_encoding.h"

#include "binary/encoding_names.h"
#include "binary/utf.h"
#include "core/exception.h"
#include "test_data.h"

#include <gtest/gtest.h>

#include <sstream>

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

// The name of the error with which a document is refused.
std::string refusalOf(std::string_view document) {
    try {
        static_cast<void>(decodeXml(asBytes(document), nameCodePage));
        return "accepted";
    } catch (const Exception& error) {
        return error.what();
    }
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
    std::istringstream lines(readTestText("text/bad_documents.txt"));
    int count = 0;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t tab = line.find('\t');
        if (tab != std::string::npos) {
            EXPECT_EQ(refusalOf(line.substr(tab + 1)), line.substr(0, tab)) << line;
            ++count;
        }
    }
    EXPECT_EQ(count, 27);
}

TEST(XmlEncoding, NamesTheFaultOfBadBytes) {
    const std::string rows[] = {"", " \r\n", markUtf8};
    for (const std::string& row : rows) {
        EXPECT_EQ(refusalOf(row), "E_XML_INVALID") << testing::PrintToString(row);
    }
    const std::string undecided[] = {
        declared("") + "\x81\x81",  // no name, not UTF-8, and like no language
        "\x4C\x6F\xA7\x94\x93",     // EBCDIC
        "\0\0\xFF\xFE"s,            // UTF-32 in an unusual byte order
    };
    for (const std::string& row : undecided) {
        EXPECT_EQ(refusalOf(row), "E_XML_DECODE") << testing::PrintToString(row);
    }
    const std::string contradicting[] = {
        markUtf8 + declared("encoding='windows-1251'"),
        markLe + utf16Le(declared("encoding='utf-8'")),
        markLe + utf16Le(declared("encoding='utf-16be'")),
        utf16Be(declared("encoding='koi8-r'")),
        declared("encoding='utf-8'") + "\xFF",
        declared("encoding='us-ascii'") + "\x80",
        markUtf8 + "<a>\xC0",
        markBe + utf16Be("<a/>") + "\xDC\x01",
        utf16Le("<a/>") + "!",
        spread("<a/>", 4, std::endian::big) + "!",
    };
    for (const std::string& row : contradicting) {
        EXPECT_EQ(refusalOf(row), "E_XML_ENCODING") << testing::PrintToString(row);
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
    std::istringstream lines(readTestText("text/encoding_names.txt"));
    lines.ignore(200, '\n');
    std::string name;
    for (std::uint32_t codePage = 0; lines >> name >> codePage;) {
        const auto encoding = findEncoding(name);
        EXPECT_EQ(encoding ? encoding->codePage : 0, codePage) << name;
    }
    EXPECT_EQ(name, "cp99999999999") << "not all lines were read";
    EXPECT_FALSE(findEncoding(""));
}
