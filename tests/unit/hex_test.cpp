#include "binary/hex.h"

#include "core/errors.h"
#include "core/exception.h"
#include "test_data.h"

#include <gtest/gtest.h>

using namespace Corvane;

TEST(Hex, EncodesInUpperCase) {
    EXPECT_EQ(binToHex(Bytes{0x0A, 0xFF}), L"0AFF");
    EXPECT_EQ(binToHex({}), L"");
}

TEST(Hex, AgreesWithOtherTools) {
    const Bytes bytes = readTestData("text/random.bin");
    const std::string text = readTestText("text/random.hex");
    std::string encoded(text.size(), '\0');
    EXPECT_EQ(encodeHex(bytes, encoded.data()), encoded.data() + encoded.size());
    EXPECT_EQ(encoded, text);
    EXPECT_EQ(binToHex(bytes), std::wstring(text.begin(), text.end()));
    EXPECT_EQ(hexToBin(text), bytes);
}

TEST(Hex, DecodesPairsOfDigits) {
    EXPECT_EQ(hexToBin(L""), Bytes{});
    EXPECT_EQ(hexToBin(L"0a1B"), (Bytes{0x0A, 0x1B}));
    EXPECT_EQ(hexToBin("09afAF"), (Bytes{0x09, 0xAF, 0xAF}));
    EXPECT_EQ(hexToBin(L"\x0130\x2041"), Bytes{0x0A}) << "only the low eight bits count";
}

TEST(Hex, RefusesWhatIsNotPairsOfDigits) {
    const std::wstring twoBlocks(16384, L'0');
    const struct {
        std::wstring text;
        const ErrorDescriptor& error;
    } rows[] = {
        {L"0g", E_HEX_STRING},
        {L"g0", E_HEX_STRING},
        {L"0a 1b", E_HEX_STRING},
        {L"0x0A", E_HEX_STRING},
        {L"/0", E_HEX_STRING},  // the neighbours of the digits
        {L":0", E_HEX_STRING},
        {L"@0", E_HEX_STRING},
        {L"G0", E_HEX_STRING},
        {L"`0", E_HEX_STRING},
        {L"0a1", E_HEX_STRING_SIZE},
        {L"g", E_HEX_STRING_SIZE},  // the missing partner is noticed before the wrong digit
        {L"0g1", E_HEX_STRING},     // but an earlier pair comes first
        {twoBlocks + L"z0", E_HEX_STRING},
        {twoBlocks + L"z", E_HEX_STRING_SIZE},
    };
    for (const auto& row : rows) {
        try {
            static_cast<void>(hexToBin(row.text));
            ADD_FAILURE() << row.text << " was accepted";
        } catch (const Exception& error) {
            EXPECT_EQ(error.code(), row.error.code) << row.text;
        }
    }
}
