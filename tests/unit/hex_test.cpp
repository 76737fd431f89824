#include "binary/hex.h"

#include "support.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;
using namespace std::string_literals;

namespace {

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

}  // namespace
