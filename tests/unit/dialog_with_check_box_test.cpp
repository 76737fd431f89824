// Shows the real dialog and answers it from another thread, as a user would.
#include "gui/dialog_with_check_box.h"

#include "dialog_driver.h"
#include "support.h"

#include <gtest/gtest.h>

using namespace Corvane;
using Gui::DialogWithCheckBox;
using Choice = DialogWithCheckBox::Choice;

namespace {

constexpr int rememberId = 1001;
constexpr int textId = -1;

std::wstring textOf(HWND window) {
    wchar_t text[300] = L"";
    ::GetWindowTextW(window, text, 300);
    return text;
}

Choice ask(std::function<void(HWND)> answer, HWND owner = nullptr) {
    const DialogDriver driver(std::move(answer));
    return DialogWithCheckBox(L"почта%2.рф").get(::GetModuleHandleW(nullptr), owner);
}

TEST(DialogWithCheckBox, EveryWayToAnswerHasItsChoice) {
    const struct {
        const char* name;
        bool remember;
        UINT message;
        WPARAM command;
        Choice choice;
    } rows[] = {
        {"allow", false, WM_COMMAND, IDOK, Choice::allow},
        {"refuse", false, WM_COMMAND, IDCANCEL, Choice::refuse},
        {"allow and remember", true, WM_COMMAND, IDOK, Choice::allowAndRemember},
        {"refuse and remember", true, WM_COMMAND, IDCANCEL, Choice::refuseAndRemember},
        {"close, though the box is checked", true, WM_CLOSE, 0, Choice::refuse},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ask([&](HWND dialog) {
                      ::SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_DOUBLECLICKED), 0);  // no answer
                      if (row.remember)
                          ::SendDlgItemMessageW(dialog, rememberId, BM_CLICK, 0, 0);
                      ::PostMessageW(dialog, row.message, row.command, 0);
                  }),
                  row.choice)
            << row.name;
    }
}

TEST(DialogWithCheckBox, ShowsTheSiteAndItsControls) {
    ask([](HWND dialog) {
        EXPECT_EQ(textOf(dialog), L"Внимание");
        constexpr DWORD styles = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME;
        EXPECT_EQ(static_cast<DWORD>(::GetWindowLongPtrW(dialog, GWL_STYLE)) & styles, styles);
        EXPECT_TRUE(::GetWindowLongPtrW(dialog, GWL_EXSTYLE) & WS_EX_TOPMOST);

        const std::pair<int, const wchar_t*> controls[] = {
            {IDOK, L"Разрешить доступ"},
            {IDCANCEL, L"Запретить"},
            {rememberId, L"Запомнить выбор"},
            {textId,
             L"Сайт почта%2.рф просит доступ к плагину Zim Vetrel.\n\n"
             L"Запретите доступ, если не доверяете этому сайту."},
        };
        for (const auto& [id, text] : controls)
            EXPECT_EQ(textOf(::GetDlgItem(dialog, id)), text);
        ::PostMessageW(dialog, WM_CLOSE, 0, 0);
    });
}

TEST(DialogWithCheckBox, OwnerCannotBeUsedMeanwhile) {
    const HWND owner =
        ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    ask(
        [&](HWND dialog) {
            EXPECT_FALSE(::IsWindowEnabled(owner));
            EXPECT_EQ(::GetWindow(dialog, GW_OWNER), owner);
            ::PostMessageW(dialog, WM_CLOSE, 0, 0);
        },
        owner);
    ::DestroyWindow(owner);
}

TEST(DialogWithCheckBox, DialogThatCannotBeShownIsAnError) {
    const auto [code, number] = Corvane::Test::failureOf([] {
        // A module without the dialog.
        DialogWithCheckBox(L"example.org").get(::GetModuleHandleW(L"ntdll.dll"), nullptr);
    });
    EXPECT_EQ(code, E_COMMON_DLG_OPTIONS.code);
    EXPECT_NE(number, 0u);
}

}  // namespace
