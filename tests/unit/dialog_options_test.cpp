#include "gui/dialog_options.h"

#include "gui/chosen_files.h"
#include "support.h"

using namespace Corvane;
using namespace Corvane::Gui;
using namespace std::string_literals;
using Corvane::Test::errorCode;

namespace {

constexpr std::uint32_t noPairs = 201;
constexpr std::uint32_t badOptions = 202;

// What the Windows API takes by default: descriptions and patterns, each ended by a NUL.
const std::wstring defaultFilter = L"Все файлы\0*.*\0Текстовые файлы\0*.TXT\0"s;

TEST(DialogOptions, EachKindHasItsDefaults) {
    const struct {
        DialogKind kind;
        const wchar_t* title;
        std::wstring filter;
    } rows[] = {
        {DialogKind::openFile, L"Выберите файл", defaultFilter},
        {DialogKind::openFiles, L"Выберите файлы", defaultFilter},
        {DialogKind::saveFile, L"Сохранить файл как", defaultFilter},
        {DialogKind::selectFolder, L"Выберите папку", L""},
    };
    for (const auto& row : rows) {
        for (const wchar_t* text : {L"", L"{}", L"{\"unknown\": [1], \"Title\": 1}", L"null"}) {
            const DialogOptions options = parseJsonOptions(row.kind, text);
            EXPECT_EQ(options.title, row.title);
            EXPECT_EQ(options.filter, row.filter);
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
    const struct {
        const wchar_t* text;
        const wchar_t* message;  // part of what the parser says
    } rows[] = {
        {L"{", L"(* Line 1, Column 2\n  Missing '}' or object member name\n)"},
        {L"[object Object]", L"Syntax error: value, object or array expected."},  // an object made text
        {L"{title: 1}", L"Missing '}' or object member name"},
        {L"{'title': 'a'}", L"Missing '}' or object member name"},
        {L"{\"initialDir\": \"C:\\dir\"}", L"Bad escape sequence in string"},
        {L"\xFEFF{}", L"Syntax error: value, object or array expected."},
        {L"[]", L"objectValue"},
        {L"5", L"objectValue"},
        {L"\"text\"", L"objectValue"},
        {L"{\"title\": []}", L"not convertible to string"},
        {L"{\"filter\": {}}", L"not convertible to string"},
        {L"{\"filterIndex\": \"1\"}", L"not convertible to Int"},
        {L"{\"filterIndex\": 2147483648}", L"out of Int range"},
    };
    for (const auto& row : rows) {
        try {
            parseJsonOptions(DialogKind::openFile, row.text);
            ADD_FAILURE() << row.text;
        } catch (const JsonException& exception) {
            EXPECT_EQ(exception.code(), badOptions);
            EXPECT_EQ(fullMessage(exception).find(L"[202] Ошибка параметров диалога ("), 0u);
            EXPECT_NE(fullMessage(exception).find(row.message), std::wstring::npos) << fullMessage(exception);
        }
    }
    EXPECT_EQ(errorCode([] { parseJsonOptions(DialogKind::openFile, std::wstring(1'000'000, L'[')); }),
              badOptions)
        << "nested beyond the parser's limit";
    EXPECT_EQ(errorCode([] { parseJsonOptions(DialogKind::openFile, L"{\"filter\": \"Документы|*.doc\"}"); }),
              noPairs);
}

TEST(DialogOptions, FiltersArePairs) {
    using Gui::detail::unescapeFilter;
    EXPECT_EQ(unescapeFilter(L""), L"");
    EXPECT_EQ(unescapeFilter(L"Все файлы|*.*|"), L"Все файлы\0*.*\0"s);
    EXPECT_EQ(unescapeFilter(L"||"), L"\0\0"s);
    for (const std::wstring& bad : {
             L"Все файлы"s, L"Все файлы|*.*"s, L"|"s, L"a|b|c|"s,
             L"a|b|c"s,      // an even number, but the last part has no end
             L"a\0b|*.*|"s,  // would be three parts
         }) {
        EXPECT_EQ(errorCode([&] { unescapeFilter(bad); }), noPairs) << bad;
    }
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
