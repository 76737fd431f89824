#include "gui/dialog_options.h"

#include "core/utf8.h"
#include "gui/chosen_files.h"
#include "support.h"

using namespace Corvane;
using namespace Corvane::Gui;
using namespace Corvane::Test;
using namespace std::string_literals;

namespace {

constexpr std::uint32_t noPairs = 201;
constexpr std::uint32_t badOptions = 202;

TEST(DialogOptions, EachKindHasItsDefaults) {
    // What the Windows API takes: descriptions and patterns, each ended by a NUL.
    const std::wstring filter = L"Все файлы\0*.*\0Текстовые файлы\0*.TXT\0"s;
    for (const auto& [kind, title] : {std::pair(DialogKind::openFile, L"Выберите файл"),
                                      std::pair(DialogKind::openFiles, L"Выберите файлы"),
                                      std::pair(DialogKind::saveFile, L"Сохранить файл как"),
                                      std::pair(DialogKind::selectFolder, L"Выберите папку")}) {
        for (const wchar_t* text : {L"", L"{}", L"{\"unknown\": [1], \"Title\": 1}", L"null"}) {
            const DialogOptions options = parseJsonOptions(kind, text);
            EXPECT_EQ(options.title, title);
            EXPECT_EQ(options.filter, kind == DialogKind::selectFolder ? L"" : filter);
            EXPECT_EQ(options.initialDir, L"");
            EXPECT_EQ(options.filterIndex, 0);
        }
    }
}

TEST(DialogOptions, MembersTakeThePlaceOfTheDefaults) {
    const DialogOptions all = parseJsonOptions(
        DialogKind::openFile,
        L"{\"title\": \"\\u05d0 \\ud83d\\ude00 Ж\", \"filter\": \"Документы|*.doc;*.docx|\", "
        L"\"initialDir\": \"C:\\\\Папка\", \"filterIndex\": 2, \"more\": {}}");
    // The last letter beyond 16 bits is D83D DE00 in UTF-16.
    EXPECT_EQ(all.title, std::wstring({0x05D0, L' ', 0xD83D, 0xDE00, L' ', L'Ж'}));
    EXPECT_EQ(all.filter, L"Документы\0*.doc;*.docx\0"s);
    EXPECT_EQ(all.initialDir, L"C:\\Папка");
    EXPECT_EQ(all.filterIndex, 2);

    const DialogOptions empty =
        parseJsonOptions(DialogKind::saveFile, L"{\"title\": null, \"filter\": \"\"}");
    EXPECT_EQ(empty.title, L"");
    EXPECT_EQ(empty.filter, L"") << "no filter at all";
}

TEST(DialogOptions, WhatCannotBeMeantIsRefusedWithTheParsersText) {
    for (const auto& row : readTable("text/dialog_options.txt", 3)) {
        std::wstring text = fromUtf8(row[1]);
        SCOPED_TRACE(row[1]);
        if (row[0] == "filter") {
            std::wstring filter;
            EXPECT_EQ(errorCode([&] { filter = Gui::detail::unescapeFilter(text); }),
                      row[2] == "yes" ? 0 : noPairs);
            std::ranges::replace(text, L'|', L'\0');
            EXPECT_EQ(filter, row[2] == "yes" ? text : L"");
            continue;
        }
        std::wstring message = fromUtf8(row[2]);
        std::ranges::replace(message, L'$', L'\n');
        try {
            parseJsonOptions(DialogKind::openFile, text);
            ADD_FAILURE();
        } catch (const JsonException& exception) {
            EXPECT_EQ(exception.code(), badOptions);
            EXPECT_TRUE(fullMessage(exception).starts_with(L"[202] Ошибка параметров диалога ("));
            EXPECT_NE(fullMessage(exception).find(message), std::wstring::npos) << fullMessage(exception);
        }
    }
    EXPECT_EQ(errorCode([] { parseJsonOptions(DialogKind::openFile, std::wstring(1'000'000, L'[')); }),
              badOptions)
        << "nested beyond the parser's limit";
    EXPECT_EQ(errorCode([] { parseJsonOptions(DialogKind::openFile, L"{\"filter\": \"Документы|*.doc\"}"); }),
              noPairs);
    EXPECT_EQ(errorCode([] { Gui::detail::unescapeFilter(L"a\0b|*.*|"s); }), noPairs) << "three parts";
}

TEST(ChosenFiles, StringsOfTheBufferAreJoined) {
    const struct {
        std::wstring buffer;
        const wchar_t* joined;
        const wchar_t* first;
    } rows[] = {
        {L"C:\\dir\\a.txt\0\0\0"s, L"C:\\dir\\a.txt", L"C:\\dir\\a.txt"},
        {L"C:\\dir\0a.txt\0b.txt\0\0old\0"s, L"C:\\dir|a.txt|b.txt", L"C:\\dir"},
        {L"C:\\\0имя\0\0"s, L"C:\\|имя", L"C:\\"},
        {L"\0old\0"s, L"", L""},
        {L"a\0b"s, L"a|b", L"a"},  // nothing ends it but the buffer
        {L"", L"", L""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(joinStrings(row.buffer), row.joined);
        EXPECT_EQ(firstString(row.buffer), row.first);
    }
}

}  // namespace
