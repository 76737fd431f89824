// Shows the real dialog and answers it from another thread, as a user would.
#include "gui/dialog_with_check_box.h"

#include "core/system_exception.h"
#include "dialog_driver.h"

#include <gtest/gtest.h>

using namespace Corvane;
using Gui::DialogWithCheckBox;
using Choice = DialogWithCheckBox::Choice;

namespace {

constexpr int rememberId = 1001;
constexpr int textId = -1;

std::wstring textOf(HWND window) {
    std::wstring text(300, L'\0');
    text.resize(
        static_cast<std::size_t>(::GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

Choice ask(const std::wstring& site, std::function<void(HWND)> answer) {
    const DialogDriver driver(std::move(answer));
    return DialogWithCheckBox(site).get(::GetModuleHandleW(nullptr), nullptr);
}

// Position and size of a control within the dialog, in pixels.
RECT placeOf(HWND dialog, int id) {
    RECT place{};
    ::GetWindowRect(::GetDlgItem(dialog, id), &place);
    ::MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&place), 2);
    return {place.left, place.top, place.right - place.left, place.bottom - place.top};
}

}  // namespace

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
        {"close", false, WM_CLOSE, 0, Choice::refuse},
        {"close, though the box is checked", true, WM_CLOSE, 0, Choice::refuse},
    };
    for (const auto& row : rows) {
        const Choice choice = ask(L"example.org", [&](HWND dialog) {
            if (row.remember) {
                ::SendDlgItemMessageW(dialog, rememberId, BM_CLICK, 0, 0);
            }
            if (row.message == WM_COMMAND) {
                ::SendDlgItemMessageW(dialog, static_cast<int>(row.command), BM_CLICK, 0, 0);
            } else {
                ::PostMessageW(dialog, row.message, 0, 0);
            }
        });
        EXPECT_EQ(choice, row.choice) << row.name;
    }
}

TEST(DialogWithCheckBox, OtherNotificationsDoNotAnswer) {
    const Choice choice = ask(L"example.org", [](HWND dialog) {
        ::SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_DOUBLECLICKED), 0);
        ::SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(rememberId, BN_CLICKED), 0);
        ::SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
    });
    EXPECT_EQ(choice, Choice::refuse);
}

TEST(DialogWithCheckBox, ShowsTheSiteAndItsControls) {
    ask(L"почта%2.рф", [](HWND dialog) {
        EXPECT_EQ(textOf(dialog), L"Внимание");
        EXPECT_EQ(textOf(::GetDlgItem(dialog, textId)),
                  L"Сайт почта%2.рф просит доступ к плагину Zim Vetrel.\n\n"
                  L"Запретите доступ, если не доверяете этому сайту.");
        constexpr DWORD styles = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME;
        EXPECT_EQ(static_cast<DWORD>(::GetWindowLongPtrW(dialog, GWL_STYLE)) & styles, styles);
        EXPECT_TRUE(::GetWindowLongPtrW(dialog, GWL_EXSTYLE) & WS_EX_TOPMOST);

        const struct {
            int id;
            const wchar_t* text;  // null: shown above
            RECT place;           // in dialog units: x, y, width, height
        } rows[] = {
            {IDOK, L"Разрешить доступ", {15, 76, 77, 14}},
            {IDCANCEL, L"Запретить", {105, 76, 50, 14}},
            {rememberId, L"Запомнить выбор", {15, 57, 79, 10}},
            {textId, nullptr, {15, 12, 203, 45}},
        };
        for (const auto& row : rows) {
            if (row.text) {
                EXPECT_EQ(textOf(::GetDlgItem(dialog, row.id)), row.text);
            }
            RECT wanted = row.place;
            ::MapDialogRect(dialog, &wanted);
            const RECT place = placeOf(dialog, row.id);
            EXPECT_TRUE(::EqualRect(&place, &wanted)) << row.id;
        }
        RECT client{};
        ::GetClientRect(dialog, &client);
        RECT size{0, 0, 227, 103};
        ::MapDialogRect(dialog, &size);
        EXPECT_TRUE(::EqualRect(&client, &size));
        ::PostMessageW(dialog, WM_CLOSE, 0, 0);
    });
}

TEST(DialogWithCheckBox, OwnerCannotBeUsedMeanwhile) {
    const HWND owner =
        ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(owner, nullptr);
    bool wasEnabled = true;
    HWND ownerSeen = nullptr;
    const DialogDriver driver([&](HWND dialog) {
        wasEnabled = ::IsWindowEnabled(owner) != FALSE;
        ownerSeen = ::GetWindow(dialog, GW_OWNER);
        ::PostMessageW(dialog, WM_CLOSE, 0, 0);
    });
    DialogWithCheckBox(L"example.org").get(::GetModuleHandleW(nullptr), owner);
    EXPECT_FALSE(wasEnabled);
    EXPECT_EQ(ownerSeen, owner);
    ::DestroyWindow(owner);
}

TEST(DialogWithCheckBox, DialogThatCannotBeShownIsAnError) {
    try {
        // A module without the dialog.
        DialogWithCheckBox(L"example.org").get(::GetModuleHandleW(L"ntdll.dll"), nullptr);
        ADD_FAILURE() << "nothing thrown";
    } catch (const Win32Exception& exception) {
        EXPECT_EQ(exception.code(), E_COMMON_DLG_OPTIONS.code);
        EXPECT_NE(exception.error(), 0u);
    }
}
