#include "binary/utf.h"

#include "binary/hex.h"
#include "binary/text.h"
#include "support.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

TEST(Utf, DecodesWhatIsWellFormed) {
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

TEST(Utf, SwapsPairsOfBytes) {
    EXPECT_EQ(Binary::detail::swapBytes(Bytes{1, 2, 3, 4, 5}), (Bytes{2, 1, 4, 3, 5}));
    EXPECT_EQ(Binary::detail::swapBytes({}), Bytes{});
}

TEST(Text, TakesTheBytesFromAnOffset) {
    const Bytes bytes{'a', 0, 0xFF};
    EXPECT_EQ(Binary::detail::toString(bytes, 0), std::string("a\0\xFF", 3));
    EXPECT_EQ(Binary::detail::toString(bytes, 2), "\xFF");
    EXPECT_THROW(static_cast<void>(Binary::detail::toString(bytes, 3)), std::out_of_range);
    EXPECT_EQ(Binary::detail::toString({}, 7), "");
}

}  // namespace
