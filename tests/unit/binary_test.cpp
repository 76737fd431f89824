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
#include "support.h"

#include <iomanip>
#include <regex>

using namespace Corvane;
using namespace Corvane::Test;
using namespace std::string_literals;

namespace {

std::string encodeNarrow(const Bytes& bytes, std::uint32_t flags) {
    const std::size_t size = getBinToBase64RequiredSize(static_cast<std::int64_t>(bytes.size()), flags);
    std::string text(size + 1, '#');
    EXPECT_EQ(encodeBase64(bytes, flags, text.data()), text.data() + size);
    EXPECT_EQ(text.back(), '#') << "written beyond the required size";
    text.pop_back();
    return text;
}

TEST(Base64, EncodesAndDecodesBack) {
    const auto expect = [](const Bytes& bytes, std::uint32_t flags, const std::string& text) {
        SCOPED_TRACE(text);
        EXPECT_EQ(encodeNarrow(bytes, flags), text);
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
    // Letters of other scripts whose low byte, or low bytes saturated, would be in the alphabet.
    EXPECT_EQ(base64ToBin(L"\x0141QUJD\x0142\x2041\xFF21\x8041"), bytesOf("ABC"));
}

TEST(Base64, FindsAForeignCharacterAtAnyPlaceOfALongText) {
    const std::string text(64, '/');
    for (std::size_t place = 0; place <= text.size(); ++place) {
        for (const char foreign : {'\r', '=', ',', '.', ':', '@', '[', '`', '{', '\x7F', '\xC1'}) {
            std::string broken = text;
            broken.insert(place, 1, foreign);
            ASSERT_EQ(base64ToBin(broken), Bytes(48, 0xFF)) << place << ' ' << int{foreign};
            const std::wstring broad(broken.begin(), broken.end());
            ASSERT_EQ(base64ToBin(broad), Bytes(48, 0xFF)) << place << ' ' << int{foreign};
        }
    }
}

TEST(Base64, KnowsTheSizeInAdvanceAndRefusesWhatIsTooLarge) {
    EXPECT_EQ(errorCode([] { return getBinToBase64RequiredSize(-1, 0); }), E_STRING_MAX_SIZE.code);
    EXPECT_EQ(errorCode([] { return getBinToBase64RequiredSize(0x40000000, 0); }), E_BINARY_MAX_SIZE.code);
    // 357,913,941 groups of which 18,837,575 fill lines.
    EXPECT_EQ(getBinToBase64RequiredSize(0x3FFFFFFF, 0), 357913941U * 4 + 18837575U * 2);
}

TEST(Hex, AgreesWithOtherTools) {
    const Bytes bytes = readTestData("text/random.bin");
    const std::string text = readTestText("text/random.hex");
    std::string encoded(text.size(), '\0');
    EXPECT_EQ(encodeHex(bytes, encoded.data()), encoded.data() + encoded.size());
    EXPECT_EQ(encoded, text);
    EXPECT_EQ(binToHex(bytes), wide(text));
    EXPECT_EQ(hexToBin(text), bytes);
    EXPECT_EQ(hexToBin(L"0a1BafAF"), (Bytes{0x0A, 0x1B, 0xAF, 0xAF}));
    EXPECT_EQ(hexToBin(L"\x0130\x2041"), Bytes{0x0A}) << "only the low eight bits count";
    EXPECT_EQ(hexToBin(L""), Bytes{});
}

TEST(Hex, RefusesWhatIsNotPairsOfDigits) {
    const std::wstring twoBlocks(16384, L'0');
    // The neighbours of the digits; an earlier pair comes first; in a block that is not the first.
    for (const std::wstring& text :
         {L"0g"s, L"0a 1b"s, L"/0"s, L":0"s, L"@0"s, L"G0"s, L"`0"s, L"g0"s, L"0g1"s, twoBlocks + L"z0"})
        EXPECT_EQ(errorCode([&] { return hexToBin(text); }), E_HEX_STRING.code) << text;
    // The missing partner is noticed before the wrong digit.
    for (const std::wstring& text : {L"0a1"s, L"g"s, twoBlocks + L"z"})
        EXPECT_EQ(errorCode([&] { return hexToBin(text); }), E_HEX_STRING_SIZE.code) << text;
}

// The digest of a message that comes in pieces: `first` bytes, then so many at a time.
std::string compute(const std::string& algorithm, std::span<const std::uint8_t> message,
                    std::size_t first = ~std::size_t{0}, std::size_t most = 64) {
    std::uint32_t crc32 = 0;
    Binary::MD5 md5;
    Binary::SHA256 sha256;
    for (std::size_t size = first; !message.empty(); size = most) {
        const auto piece = message.first(std::min(size, message.size()));
        message = message.subspan(piece.size());
        crc32 = Binary::getCrc32(piece, crc32);
        md5.update(piece);
        sha256.update(piece);
    }
    std::ostringstream text;
    text << std::hex << std::setfill('0');
    const auto append = [&](const auto& digest) {
        for (const unsigned byte : digest)
            text << std::setw(2) << byte;
        return text.str();
    };
    if (algorithm == "crc32")
        text << std::setw(8) << crc32;
    return algorithm == "crc32" ? text.str()
           : algorithm == "md5" ? append(md5.finish())
                                : append(sha256.finish());
}

TEST(Digest, AgreesWithPublishedVectors) {
    for (const auto& row : readTable("digests/published.txt", 3)) {
        const bool quoted = row[1].front() == '"';
        const Bytes message = quoted ? bytesOf(row[1].substr(1, row[1].size() - 2)) : hexToBin(row[1]);
        EXPECT_EQ(compute(row[0], message), row[2]) << row[1];
    }
    EXPECT_EQ(hexOf(Binary::getMd5(bytesOf("abc"))), "900150983CD24FB0D6963F7D28E17F72");
}

// On lengths around the sizes of blocks, whole and in pieces.
TEST(Digest, AgreesWithOtherTools) {
    const Bytes pattern = readTestData("text/random.bin");
    Bytes data;
    for (int i = 0; i < 70; ++i)
        data.insert(data.end(), pattern.begin(), pattern.end());
    for (const auto& row : readTable("digests/prefixes.txt", 4)) {
        const auto message = std::span(data).first(std::stoul(row[0]));
        for (const std::size_t first : {~std::size_t{0}, std::size_t{1}, std::size_t{63}, std::size_t{65}}) {
            SCOPED_TRACE(testing::Message() << row[0] << ' ' << first);
            EXPECT_EQ(compute("crc32", message, first, 7), row[1]);
            EXPECT_EQ(compute("md5", message, first, 64), row[2]);
            EXPECT_EQ(compute("sha256", message, first, 100), row[3]);
        }
    }
}

TEST(Utf, DecodesWhatIsWellFormed) {
    EXPECT_EQ(Binary::detail::swapBytes(bytesOf("abc")), bytesOf("bac")) << "no further than the input";
    for (const auto& row : readTable("text/utf.txt", 3)) {
        SCOPED_TRACE(row[0] + ' ' + row[1]);
        const Bytes bytes = hexToBin(row[1]);
        const std::endian order = row[0].ends_with("le") ? std::endian::little : std::endian::big;
        const auto text = row[0] == "utf-8"              ? utf8ToWide(bytes)
                          : row[0].starts_with("utf-16") ? utf16ToWide(bytes, order)
                                                         : utf32ToWide(bytes, order);
        EXPECT_EQ(text.has_value(), row[2] != "refused");
        EXPECT_TRUE(row[0] != "utf-8" || isUtf8(bytes) == text.has_value());
        if (text) {
            std::wstring units;
            for (std::size_t i = 0; i < row[2].size(); i += 4)
                units += static_cast<wchar_t>(std::stoul(row[2].substr(i, 4), nullptr, 16));
            EXPECT_EQ(*text, units);
        }
    }
}

TEST(Text, TakesTheBytesFromAnOffset) {
    const Bytes bytes{'a', 0, 0xFF};
    EXPECT_EQ(Binary::toString(bytes, 0), std::string("a\0\xFF", 3));
    EXPECT_EQ(Binary::toString(bytes, 2), "\xFF");
    EXPECT_THROW(static_cast<void>(Binary::toString(bytes, 3)), std::out_of_range);
    EXPECT_EQ(Binary::toString({}, 7), "");
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
            if (row[0].starts_with("E_"))
                std::ignore = Binary::toXmlString(document);
            EXPECT_EQ(std::to_string(encoding.codePage), row[0]);
            EXPECT_EQ(encoding.markSize, row[1].size() / 2);
            if (row[2] != "1") {
                EXPECT_EQ(Binary::toXmlString(document), wide(row[3]));
            }
        } catch (const Exception& error) {
            EXPECT_EQ(error.what(), row[0]);
        }
    }
}

TEST(XmlEncoding, DecodesToTextWithoutTheMark) {
    const std::wstring expected = utf8ToWide(readTestData("text/notice.xml")).value();
    EXPECT_EQ(Binary::toXmlString(bytesOf("\xEF\xBB\xBF<a/>")), L"<a/>");
    const std::string_view ascii = "<?xml version='1.0' encoding='ascii'?><a/>";
    EXPECT_EQ(Binary::toXmlString(bytesOf(ascii)), wide(ascii));
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
