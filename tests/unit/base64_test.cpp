#include "binary/base64.h"

#include "support.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;

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
    const std::string line(76, 'A');  // 57 NUL bytes
    const struct {
        Bytes bytes;
        std::uint32_t flags;
        std::string text;
    } rows[] = {
        // RFC 4648, section 10
        {{}, 0, ""},
        {bytesOf("f"), 0, "Zg=="},
        {bytesOf("fo"), 0, "Zm8="},
        {bytesOf("foo"), 0, "Zm9v"},
        {bytesOf("foob"), base64NoPadding, "Zm9vYg"},
        {bytesOf("fooba"), base64NoPadding, "Zm9vYmE"},
        {bytesOf("foobar"), base64NoPadding, "Zm9vYmFy"},
        // A line that is full by whole groups is broken, and one that is full by its padding is not.
        {Bytes(55), 0, line.substr(2) + "=="},
        {Bytes(56), 0, line.substr(1) + "="},
        {Bytes(57), 0, line + "\r\n"},
        {Bytes(58), 0, line + "\r\nAA=="},
        {Bytes(114), 0, line + "\r\n" + line + "\r\n"},
        {Bytes(116), base64NoPadding, line + "\r\n" + line + "\r\nAAA"},
        {Bytes(57), base64NoLineBreaks, line},
        {Bytes(116), base64NoLineBreaks | base64NoPadding, line + line + "AAA"},
        {readTestData("text/random.bin"), 0, readTestText("text/random.base64")},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(encodeNarrow(row.bytes, row.flags), row.text);
        EXPECT_EQ(binToBase64(row.bytes, row.flags), wide(row.text));
        EXPECT_EQ(base64ToBin(row.text), row.bytes);
        EXPECT_EQ(base64ToBin(wide(row.text)), row.bytes);
    }
}

TEST(Base64, SkipsWhatIsNotOfTheAlphabet) {
    const struct {
        const wchar_t* text;
        const char* bytes;
    } rows[] = {
        {L"QUJD\r\nRA==", "ABCD"},
        {L"Q", ""},
        {L"@@@", ""},
        {L" Q\tU\nJ D", "ABC"},
        {L"QQ==QUJD", "A\x04\x14\x24"},  // padding ends nothing: the four characters QQQU are a group
        // Letters of other scripts whose low byte, or low bytes saturated, would be in the alphabet.
        {L"\x0141QUJD\x0142\x2041\xFF21\x8041", "ABC"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(base64ToBin(row.text), bytesOf(row.bytes)) << row.bytes;
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

}  // namespace
