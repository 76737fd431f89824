// Dialogs that are answered.
#pragma once

#include <windows.h>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

namespace Corvane {

// The window of a program that has a dialog shown.
inline HWND makeOwner() {
    return ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
}

// Answers the dialogs of the process from a thread of its own.
class DialogDriver {
public:
    // `answer` is called with each dialog that appears; it must see to it that the dialog ends.
    explicit DialogDriver(std::function<void(HWND)> answer)
        : answer_(std::move(answer)), thread_([this](const std::stop_token& stop) {
              HWND last = nullptr;
              for (; !stop.stop_requested(); ::Sleep(2)) {
                  HWND dialog = nullptr;
                  ::EnumWindows(findDialog, reinterpret_cast<LPARAM>(&dialog));
                  if (dialog && dialog != last) {
                      ++count_;
                      answer_(dialog);
                  }
                  last = dialog;
              }
          }) {}

    // How many dialogs have appeared.
    int count() const noexcept { return count_; }

private:
    static BOOL CALLBACK findDialog(HWND window, LPARAM found) {
        constexpr ULONG_PTR dialogClass = 32770;
        DWORD process = 0;
        ::GetWindowThreadProcessId(window, &process);
        if (process != ::GetCurrentProcessId() || !::IsWindowVisible(window) ||
            ::GetClassLongPtrW(window, GCW_ATOM) != dialogClass)
            return TRUE;
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }

    std::function<void(HWND)> answer_;
    std::atomic<int> count_ = 0;
    std::jthread thread_;
};

}  // namespace Corvane
