#include "gui/modal_dialog.h"

#include "core/check.h"
#include "gui/dialog_box.h"

#include <utility>

namespace Corvane::Gui {
namespace {

constexpr WORD dialogId = 102;
constexpr UINT showMessage = WM_USER + 2;

// What the dialog ends with; whatever else showDialog() may return is below them.
constexpr INT_PTR chosen = 1;
constexpr INT_PTR canceled = 2;
constexpr INT_PTR failed = 3;

// The module that this code is part of, which holds the dialog.
HINSTANCE ownModule() noexcept {
    HMODULE module = nullptr;
    ::GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(&ownModule), &module);
    return module;
}

}  // namespace

bool ModalDialog::run(HWND owner, const Show& show) {
    ModalDialog dialog(show);
    const INT_PTR result =
        showDialog(ownModule(), dialogId, owner, procedure, reinterpret_cast<LPARAM>(&dialog));
    checkWin32(result >= chosen, E_COMMON_DLG_OPTIONS, L"ModalDialog::showOpenFileDialog");
    if (dialog.error_)
        std::rethrow_exception(dialog.error_);
    return result == chosen;
}

INT_PTR CALLBACK ModalDialog::procedure(HWND host, UINT message, WPARAM, LPARAM second) noexcept {
    if (message == WM_INITDIALOG) {
        ::SetWindowLongPtrW(host, DWLP_USER, second);
        reinterpret_cast<ModalDialog*>(second)->begin(host);
        return TRUE;
    }
    if (message != showMessage)
        return FALSE;
    reinterpret_cast<ModalDialog*>(::GetWindowLongPtrW(host, DWLP_USER))->showOnce(host);
    return TRUE;
}

// The message comes before the queue runs empty, which is when the system would make the host visible.
void ModalDialog::begin(HWND host) noexcept {
    ::SetWindowPos(host, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    try {
        checkWin32(::PostMessageW(host, showMessage, 0, 0), E_COMMON_DLG_OPTIONS, L"PostMessageW");
    } catch (...) {
        fail(host);
    }
}

// Any program may post the message once more while the dialog is open.
void ModalDialog::showOnce(HWND host) noexcept {
    if (std::exchange(shown_, true))
        return;
    try {
        ::EndDialog(host, show_(host) ? chosen : canceled);
    } catch (...) {
        fail(host);
    }
}

void ModalDialog::fail(HWND host) noexcept {
    error_ = std::current_exception();
    ::EndDialog(host, failed);
}

std::atomic<bool> OnlyDialog::isOpen = false;

OnlyDialog::OnlyDialog() {
    if (isOpen.exchange(true))
        failWin32(E_COMMON_DLG, L"ModalDialog::showOpenFileDialog", ERROR_BUSY);
}

}  // namespace Corvane::Gui
