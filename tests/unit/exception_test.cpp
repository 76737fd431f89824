#include "core/exception.h"

#include <gtest/gtest.h>

using namespace Corvane;

namespace {

TEST(Exception, FullMessageIsNumberTextAndDetails) {
    const auto expect = [](const Exception& exception, const wchar_t* message, const char* what) {
        EXPECT_EQ(fullMessage(exception), message);
        EXPECT_STREQ(exception.what(), what);
    };
    constexpr ErrorDescriptor unnumbered{0, "no number", nullptr};
    constexpr ErrorDescriptor namedOnly{12, "only a name", nullptr};
    const JsonException detailed(E_CERT_JSON_FILTER, "line 1");
    const JsonException plain(E_CERT_JSON_FILTER, "");
    expect(Exception(E_HEX_STRING), L"[11] Строка содержит недопустимый HEX символ", "E_HEX_STRING");
    expect(Exception(unnumbered), L"no number", "no number");
    expect(Exception(namedOnly), L"[12] only a name", "only a name");
    expect(detailed, L"[608] Неверный фильтр сертификатов (line 1)", "E_CERT_JSON_FILTER");
    expect(plain, L"[608] Неверный фильтр сертификатов", "E_CERT_JSON_FILTER");
}

}  // namespace
