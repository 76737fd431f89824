#include "binary/base64.h"

#include "core/errors.h"
#include "core/exception.h"
#include "test_data.h"

#include <gtest/gtest.h>

using namespace Corvane;

namespace {

Bytes bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

std::wstring widen(std::string_view text) {
    return {text.begin(), text.end()};
}

std::string encodeNarrow(const Bytes& bytes, std::uint32_t flags) {
    const std::size_t size = getBinToBase64RequiredSize(static_cast<std::int64_t>(bytes.size()), flags);
    std::string text(size + 1, '#');
    EXPECT_EQ(encodeBase64(bytes, flags, text.data()), text.data() + size);
    EXPECT_EQ(text.back(), '#') << "written beyond the required size";
    text.pop_back();
    return text;
}

std::uint32_t codeThrownFor(std::int64_t size) {
    try {
        ADD_FAILURE() << getBinToBase64RequiredSize(size, 0) << " characters for " << size;
        return 0;
    } catch (const Exception& error) {
        return error.code();
    }
}

// So many NUL bytes, and what they become.
std::string zeros(std::size_t characters) {
    std::string text;
    text.assign(characters, 'A');
    return text;
}

}  // namespace

TEST(Base64, EncodesTheVectorsOfRfc4648) {
    const struct {
        const char* bytes;
        const char* text;
        const char* unpadded;
    } rows[] = {
        {"", "", ""},
        {"f", "Zg==", "Zg"},
        {"fo", "Zm8=", "Zm8"},
        {"foo", "Zm9v", "Zm9v"},
        {"foob", "Zm9vYg==", "Zm9vYg"},
        {"fooba", "Zm9vYmE=", "Zm9vYmE"},
        {"foobar", "Zm9vYmFy", "Zm9vYmFy"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.bytes);
        EXPECT_EQ(encodeNarrow(bytesOf(row.bytes), 0), row.text);
        EXPECT_EQ(encodeNarrow(bytesOf(row.bytes), base64NoPadding), row.unpadded);
        EXPECT_EQ(binToBase64(bytesOf(row.bytes), 0), widen(row.text));
        EXPECT_EQ(base64ToBin(row.text), bytesOf(row.bytes));
        EXPECT_EQ(base64ToBin(widen(row.unpadded)), bytesOf(row.bytes));
    }
}

TEST(Base64, BreaksLinesAfterEveryFullLineOfWholeGroups) {
    const std::string line = zeros(76);
    const struct {
        std::size_t size;
        std::uint32_t flags;
        std::string text;
    } rows[] = {
        {54, 0, zeros(72)},
        {55, 0, zeros(74) + "=="},  // full by its padding only: no break
        {56, 0, zeros(75) + "="},
        {57, 0, line + "\r\n"},
        {58, 0, line + "\r\nAA=="},
        {60, 0, line + "\r\nAAAA"},
        {114, 0, line + "\r\n" + line + "\r\n"},
        {116, 0, line + "\r\n" + line + "\r\nAAA="},
        {116, base64NoPadding, line + "\r\n" + line + "\r\nAAA"},
        {57, base64NoLineBreaks, line},
        {116, base64NoLineBreaks | base64NoPadding, line + line + "AAA"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.size << " bytes, flags " << row.flags);
        EXPECT_EQ(encodeNarrow(Bytes(row.size), row.flags), row.text);
        EXPECT_EQ(base64ToBin(row.text), Bytes(row.size));
    }
}

TEST(Base64, AgreesWithOtherTools) {
    const Bytes bytes = readTestData("text/random.bin");
    const std::string text = readTestText("text/random.base64");
    EXPECT_EQ(encodeNarrow(bytes, 0), text);
    EXPECT_EQ(binToBase64(bytes, 0), widen(text));
    EXPECT_EQ(base64ToBin(text), bytes);
    EXPECT_EQ(base64ToBin(widen(text)), bytes);
}

TEST(Base64, SkipsWhatIsNotOfTheAlphabet) {
    const struct {
        const wchar_t* text;
        const char* bytes;
    } rows[] = {
        {L"QUJD\r\nRA==", "ABCD"},
        {L"Q", ""},
        {L"@@@", ""},
        {L"QUI", "AB"},
        {L" Q\tU\nJ D", "ABC"},
        {L"QQ==QUJD", "A\x04\x14\x24"},  // padding ends nothing: the four characters QQQU are a group
        {L"QUJDQUJDQUJDQUJDQUJ-DQUJDQUJDQUJDQUJDQUJD", "ABCABCABCABCABCABCABCABCABCABC"},
        // Letters of other scripts whose low byte, or low bytes saturated, would be in the alphabet.
        {L"\x0141QUJD\x0142\x2041\xFF21\x8041", "ABC"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(base64ToBin(row.text), bytesOf(row.bytes)) << row.bytes;
    }
}

TEST(Base64, FindsAForeignCharacterAtAnyPlaceOfALongText) {
    const std::string text(64, '/');
    for (std::size_t place = 0; place <= text.size(); ++place) {
        for (const char foreign : {'\r', '=', ',', '.', ':', '@', '[', '`', '{', '\x7F', '\xC1'}) {
            std::string broken = text;
            broken.insert(place, 1, foreign);
            ASSERT_EQ(base64ToBin(broken), Bytes(48, 0xFF)) << place << ' ' << int{foreign};
            ASSERT_EQ(base64ToBin(widen(broken)), Bytes(48, 0xFF)) << place << ' ' << int{foreign};
        }
    }
}

TEST(Base64, KnowsTheSizeInAdvanceAndRefusesWhatIsTooLarge) {
    EXPECT_EQ(codeThrownFor(-1), E_STRING_MAX_SIZE.code);
    EXPECT_EQ(codeThrownFor(0x40000000), E_BINARY_MAX_SIZE.code);
    // 357,913,941 groups of which 18,837,575 fill lines.
    EXPECT_EQ(getBinToBase64RequiredSize(0x3FFFFFFF, 0), 357913941U * 4 + 18837575U * 2);
}
