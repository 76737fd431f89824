#include "binary/utf.h"

#include "binary/text.h"
#include "support.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;
using namespace std::string_view_literals;

namespace {

// UTF-16 code units, which a wide literal is not everywhere.
std::wstring units(std::u16string_view text) {
    return {text.begin(), text.end()};
}

TEST(Utf, DecodesWellFormedUtf8) {
    const struct {
        std::string_view bytes;
        std::u16string_view text;
    } rows[] = {
        {"", u""},
        {"a\0b"sv, u"a\0b"sv},
        {"\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF", u"\u007F\u0080\u07FF\u0800\uFFFF"},
        {"\xED\x9F\xBF\xEE\x80\x80", u"\uD7FF\uE000"},
        {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", u"\U00010000\U0010FFFF"},
        {"\xEF\xBB\xBF<", u"\uFEFF<"},
        {"plain text, then \xD1\x8F and plain text again", u"plain text, then \u044F and plain text again"},
    };
    for (const auto& row : rows) {
        EXPECT_TRUE(isUtf8(bytesOf(row.bytes)));
        EXPECT_EQ(utf8ToWide(bytesOf(row.bytes)), units(row.text)) << row.bytes;
    }
}

TEST(Utf, RefusesIllFormedUtf8) {
    const std::string_view rows[] = {
        "\x80",              // a continuation without a lead
        "\xC1\xBF",          // two bytes for what needs one
        "\xE0\x9F\xBF",      // three for two
        "\xF0\x8F\xBF\xBF",  // four for three
        "\xED\xA0\x80",      // the first surrogate
        "\xED\xBF\xBF",      // the last one
        "\xF4\x90\x80\x80",  // above U+10FFFF
        "\xF5\x80\x80\x80",  // no lead of anything
        "\xFF",
        "12345678\xC3",  // the text ends too early
        "12345678\xE2\x82",
        "12345678\xF0\x9F\x92",
        "\xC3(",  // a lead without its continuation
        "\xE2\x28\xA1",
        "\xE2\x82\x28",
        "\xF0\x9F\x92(",
    };
    for (const std::string_view row : rows) {
        EXPECT_FALSE(isUtf8(bytesOf(row))) << testing::PrintToString(row);
        EXPECT_FALSE(utf8ToWide(bytesOf(row))) << testing::PrintToString(row);
    }
}

TEST(Utf, DecodesUtf16AndUtf32OfBothByteOrders) {
    using enum std::endian;
    EXPECT_EQ(utf16ToWide(bytesOf("\x3C\x00\x3F\x04"sv), little), units(u"<\u043F"));
    EXPECT_EQ(utf16ToWide(bytesOf("\x00\x3C\xD8\x3D\xDE\x00"sv), big), units(u"<\U0001F600"));
    EXPECT_EQ(utf16ToWide({}, big), L"");
    EXPECT_EQ(utf32ToWide(bytesOf("\x00\x01\xF6\x00\x00\x00\x04\x3F"sv), big), units(u"\U0001F600\u043F"));
    EXPECT_EQ(utf32ToWide(bytesOf("\xFF\xFF\x10\x00"sv), little), units(u"\U0010FFFF"));
    const std::string_view utf16[] = {
        "<"sv,                         // half a unit
        "\xD8\x3D"sv,                  // a high surrogate at the end,
        "\xD8\x3D\x00\x41"sv,          // before a letter,
        "\xD8\x3D\xD8\x3D\xDE\x00"sv,  // before another one
        "\xDE\x00\xD8\x3D"sv,          // a low surrogate first
    };
    for (const std::string_view row : utf16)
        EXPECT_FALSE(utf16ToWide(bytesOf(row), big)) << testing::PrintToString(row);
    // A cut unit, the first and the last surrogate, a number above U+10FFFF
    for (const auto row : {"\0\0\0"sv, "\0\0\xD8\0"sv, "\0\0\xDF\xFF"sv, "\0\x11\0\0"sv})
        EXPECT_FALSE(utf32ToWide(bytesOf(row), big)) << testing::PrintToString(row);
}

TEST(Utf, SwapsPairsOfBytes) {
    EXPECT_EQ(Binary::detail::swapBytes(Bytes{1, 2, 3, 4, 5}), (Bytes{2, 1, 4, 3, 5}));
    EXPECT_EQ(Binary::detail::swapBytes({}), Bytes{});
}

TEST(Text, TakesTheBytesFromAnOffset) {
    const Bytes bytes = bytesOf("a\0\xFF"sv);
    EXPECT_EQ(Binary::detail::toString(bytes, 0), "a\0\xFF"sv);
    EXPECT_EQ(Binary::detail::toString(bytes, 2), "\xFF");
    EXPECT_THROW(static_cast<void>(Binary::detail::toString(bytes, 3)), std::out_of_range);
    EXPECT_EQ(Binary::detail::toString({}, 7), "");
}

}  // namespace
