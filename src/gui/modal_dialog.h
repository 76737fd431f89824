// The invisible modal dialog inside which the system's file dialogs run: it disables the owner window while
// they are open and brings them to the front.
#pragma once

#include <windows.h>

#include <atomic>
#include <exception>
#include <functional>

namespace Corvane::Gui {

class ModalDialog {
public:
    // Shows a dialog owned by `host` and returns whether the user chose something.
    using Show = std::function<bool(HWND host)>;

    // Runs `show` inside the dialog and returns what it returned; what it throws passes on. `owner` may be
    // null. Messages of the calling thread are dispatched meanwhile. Throws Win32Exception
    // E_COMMON_DLG_OPTIONS when the dialog cannot be shown.
    static bool run(HWND owner, const Show& show);

private:
    explicit ModalDialog(const Show& show) : show_(show) {}

    static INT_PTR CALLBACK procedure(HWND host, UINT message, WPARAM first, LPARAM second) noexcept;
    void begin(HWND host) noexcept;
    void showOnce(HWND host) noexcept;
    void fail(HWND host) noexcept;

    const Show& show_;
    bool shown_ = false;
    std::exception_ptr error_;
};

// One file dialog at a time: the system's dialogs of a process share their place on the screen, their owner
// and the process's current folder.
class OnlyDialog {
public:
    // Throws Win32Exception E_COMMON_DLG with ERROR_BUSY while there is another one in the process.
    OnlyDialog();
    ~OnlyDialog() { isOpen = false; }
    OnlyDialog(const OnlyDialog&) = delete;
    OnlyDialog& operator=(const OnlyDialog&) = delete;

private:
    static std::atomic<bool> isOpen;
};

}  // namespace Corvane::Gui
