// The small dialog that asks whether a site may use the component, with a box to remember the answer.
#pragma once

#include <windows.h>

#include <string>

namespace Corvane::Gui {

class DialogWithCheckBox {
public:
    // How the dialog was answered.
    enum class Choice : INT_PTR {
        allow = 1,
        refuse = 2,  // also when the dialog was closed
        allowAndRemember = 3,
        refuseAndRemember = 4,
    };

    // `site` is shown as the one that asks.
    explicit DialogWithCheckBox(std::wstring site);

    // Shows the dialog of the module `instance` and waits for the answer; `owner`, which may be null, cannot
    // be used meanwhile. Messages of the calling thread are dispatched. Throws Win32Exception
    // E_COMMON_DLG_OPTIONS when the dialog cannot be shown.
    Choice get(HINSTANCE instance, HWND owner) const;

private:
    static INT_PTR CALLBACK procedure(HWND dialog, UINT message, WPARAM first, LPARAM second) noexcept;
    void showSite(HWND dialog) const noexcept;

    std::wstring site_;
};

}  // namespace Corvane::Gui
