#include "core/exception.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Corvane;

namespace {

constexpr ErrorDescriptor unnumbered{0, "no number", nullptr};
constexpr ErrorDescriptor namedOnly{12, "only a name", nullptr};

struct MessageCase {
    std::shared_ptr<Exception> exception;
    const wchar_t* message;
    const char* what;
};

TEST(Exception, FullMessageIsNumberTextAndDetails) {
    const MessageCase cases[] = {
        {std::make_shared<Exception>(E_HEX_STRING), L"[11] Строка содержит недопустимый HEX символ",
         "E_HEX_STRING"},
        {std::make_shared<Exception>(unnumbered), L"no number", "no number"},
        {std::make_shared<Exception>(namedOnly), L"[12] only a name", "only a name"},
        {std::make_shared<JsonException>(E_CERT_JSON_FILTER, "line 1"),
         L"[608] Неверный фильтр сертификатов (line 1)", "E_CERT_JSON_FILTER"},
        {std::make_shared<JsonException>(E_CERT_JSON_FILTER, ""), L"[608] Неверный фильтр сертификатов",
         "E_CERT_JSON_FILTER"},
    };
    for (const MessageCase& c : cases) {
        EXPECT_EQ(fullMessage(*c.exception), c.message);
        EXPECT_STREQ(c.exception->what(), c.what);
    }
}

}  // namespace
