#include "binary/xml_encoding.h"

#include "binary/encoding_names.h"
#include "binary/hex.h"
#include "binary/utf.h"
#include "support.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

// With a conversion of the system's that only says which code page was asked for.
std::wstring decode(const Bytes& document) {
    return decodeXml(document, [](std::uint32_t codePage, std::string_view) {
        return L"code page " + std::to_wstring(codePage);
    });
}

// Text of single bytes as units of a size and order such as "2le".
std::string spread(const std::string& text, const std::string& units) {
    std::string bytes;
    for (const char character : text) {
        std::string unit(static_cast<std::size_t>(units.front() - '0'), '\0');
        (units.ends_with("le") ? unit.front() : unit.back()) = character;
        bytes += unit;
    }
    return bytes;
}

TEST(XmlEncoding, IsFoundInTheBytesOrTheFaultIsNamed) {
    for (const auto& row : readTable("text/xml_documents.txt", 5)) {
        SCOPED_TRACE(row[1] + ' ' + row[2] + ' ' + row[3] + ' ' + row[4]);
        Bytes document = hexToBin(row[1]);
        for (const Bytes& part : {bytesOf(spread(row[3], row[2])), hexToBin(row[4])})
            document.insert(document.end(), part.begin(), part.end());
        try {
            const XmlEncoding encoding = findXmlEncoding(document);
            decode(document);
            EXPECT_EQ(std::to_string(encoding.codePage), row[0]);
            EXPECT_EQ(encoding.markSize, row[1].size() / 2);
        } catch (const Exception& error) {
            EXPECT_EQ(error.what(), row[0]);
        }
    }
    const auto codePage = [](std::string_view text) { return findXmlEncoding(bytesOf(text)).codePage; };
    EXPECT_EQ(codePage("<?xml\tversion = '1.1'\r\n encoding\n=\n\"KOI8-R\"\n?>\n<a/>"), 20866u);
    EXPECT_EQ(codePage("\n <!-- no declaration --><a/>"), 65001u);
}

TEST(XmlEncoding, DecodesToTextWithoutTheMark) {
    const std::wstring expected = utf8ToWide(readTestData("text/notice.xml")).value();
    for (const std::string encoding : {"UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE"})
        EXPECT_EQ(decode(readTestData("text/notice." + encoding + ".xml")), expected) << encoding;
    EXPECT_EQ(decode(bytesOf("\xEF\xBB\xBF<a/>")), L"<a/>");
    const std::string_view ascii = "<?xml version='1.0' encoding='ascii'?><a/>";
    EXPECT_EQ(decode(bytesOf(ascii)), wide(ascii));
    // Russian text that declares nothing
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
