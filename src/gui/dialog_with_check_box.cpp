#include "gui/dialog_with_check_box.h"

#include "core/check.h"
#include "gui/dialog_box.h"
#include "gui/text_with_site.h"

#include <new>
#include <utility>

namespace Corvane::Gui {
namespace {

constexpr WORD dialogId = 101;
constexpr int rememberId = 1001;
constexpr int textId = -1;
constexpr int textLimit = 100;
constexpr INT_PTR failed = -1;

using Choice = DialogWithCheckBox::Choice;

Choice choiceOf(HWND dialog, WORD button) {
    const bool remember = ::IsDlgButtonChecked(dialog, rememberId) == BST_CHECKED;
    if (button == IDOK)
        return remember ? Choice::allowAndRemember : Choice::allow;
    return remember ? Choice::refuseAndRemember : Choice::refuse;
}

void end(HWND dialog, Choice choice) {
    ::EndDialog(dialog, static_cast<INT_PTR>(choice));
}

}  // namespace

DialogWithCheckBox::DialogWithCheckBox(std::wstring site) : site_(std::move(site)) {}

DialogWithCheckBox::Choice DialogWithCheckBox::get(HINSTANCE instance, HWND owner) const {
    const INT_PTR result = showDialog(instance, dialogId, owner, procedure, reinterpret_cast<LPARAM>(this));
    checkWin32(result > 0, E_COMMON_DLG_OPTIONS, L"DialogBoxParamW");
    return static_cast<Choice>(result);
}

INT_PTR CALLBACK DialogWithCheckBox::procedure(HWND dialog, UINT message, WPARAM first,
                                               LPARAM second) noexcept {
    switch (message) {
        case WM_INITDIALOG:
            reinterpret_cast<const DialogWithCheckBox*>(second)->showSite(dialog);
            return TRUE;
        case WM_COMMAND:
            if (HIWORD(first) != BN_CLICKED || (LOWORD(first) != IDOK && LOWORD(first) != IDCANCEL))
                return FALSE;
            end(dialog, choiceOf(dialog, LOWORD(first)));
            return TRUE;
        case WM_CLOSE:
            end(dialog, Choice::refuse);
            return TRUE;
        default:
            return FALSE;
    }
}

void DialogWithCheckBox::showSite(HWND dialog) const noexcept {
    try {
        std::wstring text(textLimit + 1, L'\0');
        text.resize(::GetDlgItemTextW(dialog, textId, text.data(), textLimit + 1));
        ::SetDlgItemTextW(dialog, textId, textWithSite(::GetDlgItem(dialog, textId), text, site_).c_str());
    } catch (const std::bad_alloc&) {
        // A question without its subject is not asked.
        ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        ::EndDialog(dialog, failed);
    }
}

}  // namespace Corvane::Gui
