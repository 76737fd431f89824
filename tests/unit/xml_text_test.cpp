#include "binary/xml_text.h"

#include "binary/text.h"
#include "binary/utf.h"
#include "test_data.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace Corvane;

TEST(XmlText, ConvertsCodePagesWithTheSystem) {
    const std::wstring expected = utf8ToWide(readTestData("text/notice.xml")).value();
    const std::string declaration = "<?xml version='1.0' encoding='";
    for (const std::string encoding : {"WINDOWS-1251", "KOI8-R", "IBM866"}) {
        const std::string text = readTestText("text/notice." + encoding + ".xml");
        EXPECT_EQ(Binary::toXmlString(std::vector<std::uint8_t>(text.begin(), text.end())), expected)
            << encoding;

        const std::string start = declaration + encoding + "'?>";
        const std::string document = start + text;
        EXPECT_EQ(Binary::toXmlString(std::vector<std::uint8_t>(document.begin(), document.end())),
                  std::wstring(start.begin(), start.end()) + expected)
            << encoding;
    }
}

TEST(XmlText, PassesOnTheRefusalOfAnOffset) {
    EXPECT_THROW(static_cast<void>(Binary::toString(std::vector<std::uint8_t>{1}, 1)), std::out_of_range);
}
