// Base64, hexadecimal, digests, and the encodings of text and XML documents.
#include "binary/base64.h"
#include "binary/crc32.h"
#include "binary/encoding_names.h"
#include "binary/hex.h"
#include "binary/md5.h"
#include "binary/sha256.h"
#include "binary/text.h"
#include "binary/utf.h"
#include "binary/xml_encoding.h"
#include "core/utf8.h"
#include "support.h"

#include <regex>

using namespace Corvane;
using namespace Corvane::Test;
using namespace std::string_literals;

namespace {

TEST(Base64, EncodesAndDecodesBack) {
    const auto expect = [](const Bytes& bytes, std::uint32_t flags, const std::string& text) {
        SCOPED_TRACE(text);
        EXPECT_EQ(binToBase64(bytes, flags), wide(text));
        EXPECT_EQ(base64ToBin(text), bytes);
        EXPECT_EQ(base64ToBin(wide(text)), bytes);
    };
    for (const auto& row : readTable("text/base64.txt", 4))
        expect(row[0] == "zeros" ? Bytes(std::stoul(row[1])) : bytesOf(row[1]),
               static_cast<std::uint32_t>(std::stoul(row[2])),
               std::regex_replace(row[3], std::regex("\\$"), "\r\n"));
    expect(readTestData("text/random.bin"), 0, readTestText("text/random.base64"));
}

TEST(Base64, SkipsWhatIsNotOfTheAlphabet) {
    // Padding ends nothing: the four characters QQQU are a group. A single character is none.
    EXPECT_EQ(base64ToBin(L" Q\tQ==Q\nUJ D="), bytesOf("A\x04\x14\x24"));
    EXPECT_EQ(base64ToBin(L"@Q@"), Bytes{});
    // At any place of a long text; behind ASCII, letters whose low byte, or low bytes saturated, would be of
    // it.
    const std::wstring text(64, '/');
    for (std::size_t place = 0; place <= text.size(); ++place) {
        for (const wchar_t foreign : L"\r=,.:@[`{\x7F\xC1\x0141\x2041\xFF21\x8041"s) {
            std::wstring broken = text;
            broken.insert(place, 1, foreign);
            ASSERT_EQ(base64ToBin(broken), Bytes(48, 0xFF)) << place << ' ' << int{foreign};
            const std::string narrow(broken.begin(), broken.end());
            ASSERT_TRUE(foreign > 0xFF || base64ToBin(narrow) == Bytes(48, 0xFF))
                << place << ' ' << int{foreign};
        }
    }
}

TEST(Base64, KnowsTheSizeInAdvanceAndRefusesWhatIsTooLarge) {
    EXPECT_EQ(errorCode([] { return getBinToBase64RequiredSize(0x40000000, 0); }), E_BINARY_MAX_SIZE.code);
    // 357,913,941 groups of which 18,837,575 fill lines.
    EXPECT_EQ(getBinToBase64RequiredSize(0x3FFFFFFF, 0), 357913941U * 4 + 18837575U * 2);
}

TEST(Hex, AgreesWithOtherToolsAndRefusesWhatIsNotPairsOfDigits) {
    const Bytes bytes = readTestData("text/random.bin");
    const std::string text = readTestText("text/random.hex");
    EXPECT_EQ(binToHex(bytes), wide(text));
    EXPECT_EQ(hexToBin(text), bytes);
    EXPECT_EQ(hexToBin(L"0a1BafAF\x0130\x2041"), (Bytes{0x0A, 0x1B, 0xAF, 0xAF, 0x0A}))
        << "the low bytes count";
    // The neighbours of the digits; an earlier pair comes first; in a block that is not the first.
    const std::wstring twoBlocks(16384, L'0');
    for (const std::wstring& each :
         {L"0a 1b"s, L"/0"s, L":0"s, L"@0"s, L"G0"s, L"`0"s, L"0g"s, twoBlocks + L"z0"})
        EXPECT_EQ(errorCode([&] { return hexToBin(each); }), E_HEX_STRING.code) << each;
    // The missing partner is noticed before the wrong digit.
    EXPECT_EQ(errorCode([&] { return hexToBin(twoBlocks + L"z"); }), E_HEX_STRING_SIZE.code);
}

// On lengths around the sizes of blocks, whole and in pieces.
TEST(Digest, AgreesWithOtherTools) {
    const Bytes pattern = readTestData("text/random.bin");
    Bytes data;
    for (int i = 0; i < 70; ++i)
        data.insert(data.end(), pattern.begin(), pattern.end());
    for (const auto& row : readTable("digests/prefixes.txt", 4)) {
        for (const std::size_t size : {data.size(), std::size_t{7}, std::size_t{63}, std::size_t{65}}) {
            SCOPED_TRACE(testing::Message() << row[0] << ' ' << size);
            std::uint32_t crc32 = 0;
            Binary::MD5 md5;
            Binary::SHA256 sha256;
            for (auto left = std::span(data).first(std::stoul(row[0])); !left.empty();) {
                const auto piece = left.first(std::min(size, left.size()));
                left = left.subspan(piece.size());
                crc32 = Binary::getCrc32(piece, crc32);
                md5.update(piece);
                sha256.update(piece);
            }
            EXPECT_EQ(crc32, std::stoul(row[1], nullptr, 16));
            EXPECT_TRUE(std::ranges::equal(md5.finish(), hexToBin(row[2])));
            EXPECT_TRUE(std::ranges::equal(sha256.finish(), hexToBin(row[3])));
        }
    }
}

TEST(Utf, DecodesWhatIsWellFormed) {
    EXPECT_EQ(Binary::detail::swapBytes(bytesOf("abc")), bytesOf("bac")) << "no further than the input";
    EXPECT_EQ(toUtf8(L"\xD800z\xDC00"), "\uFFFDz\uFFFD") << "halves of pairs, in the log and in JSON";
    for (const auto& row : readTable("text/utf.txt", 3)) {
        SCOPED_TRACE(row[0] + ' ' + row[1]);
        const Bytes bytes = hexToBin(row[1]);
        const std::endian order = row[0].ends_with("le") ? std::endian::little : std::endian::big;
        const auto text = row[0] == "utf-8"              ? utf8ToWide(bytes)
                          : row[0].starts_with("utf-16") ? utf16ToWide(bytes, order)
                                                         : utf32ToWide(bytes, order);
        EXPECT_TRUE(row[0] != "utf-8" || isUtf8(bytes) == text.has_value());
        std::string units = text ? "" : "refused";
        for (const wchar_t unit : text.value_or(L""))
            units += hexOf(Bytes{static_cast<std::uint8_t>(unit >> 8), static_cast<std::uint8_t>(unit)});
        EXPECT_EQ(units, row[2]);
    }
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
        XmlEncoding encoding{};
        const std::string error = errorName([&] {
            encoding = findXmlEncoding(document);
            const std::wstring text = Binary::toXmlString(document);
            EXPECT_TRUE(!row[4].empty() || text == utf8ToWide(bytesOf(row[3])));
        });
        EXPECT_EQ(error.empty() ? std::to_string(encoding.codePage) : error, row[0]);
        EXPECT_TRUE(!error.empty() || encoding.markSize == row[1].size() / 2);
    }
}

TEST(XmlEncoding, DecodesRussianThatIsDeclaredOrNot) {
    const std::wstring expected = utf8ToWide(readTestData("text/notice.xml")).value();
    for (const std::string encoding : {"WINDOWS-1251", "KOI8-R", "IBM866"}) {
        const std::string text = readTestText("text/notice." + encoding + ".xml");
        EXPECT_EQ(Binary::toXmlString(bytesOf(text)), expected) << encoding << " that declares nothing";
        const std::string start = "<?xml version='1.0' encoding='" + encoding + "'?>";
        EXPECT_EQ(Binary::toXmlString(bytesOf(start + text)), wide(start) + expected) << encoding;
    }
}

TEST(EncodingNames, AreMappedToCodePagesOfWindows) {
    for (const auto& row : readTable("text/encoding_names.txt", 2)) {
        const auto encoding = findEncoding(row[0]);
        EXPECT_EQ(std::to_string(encoding ? encoding->codePage : 0), row[1]) << row[0];
    }
    EXPECT_FALSE(findEncoding(""));
}

}  // namespace
