#include "binary/text.h"

#include "binary/bytes.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace Corvane;
using namespace std::string_literals;

TEST(Text, TakesTheBytesFromAnOffset) {
    const Bytes bytes{'a', 0, 0xFF};
    EXPECT_EQ(Binary::detail::toString(bytes, 0), "a\0\xFF"s);
    EXPECT_EQ(Binary::detail::toString(bytes, 2), "\xFF");
    EXPECT_EQ(Binary::detail::toString({}, 7), "");
}

TEST(Text, RefusesAnOffsetBehindTheLastByte) {
    try {
        static_cast<void>(Binary::detail::toString(Bytes{1, 2}, 2));
        FAIL() << "accepted";
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "invalid offset");
    }
}
