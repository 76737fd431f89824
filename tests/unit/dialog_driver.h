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
                  const HWND dialog = findDialog();
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
    static HWND findDialog() {
        const auto dialogClass = MAKEINTRESOURCEW(32770);
        HWND window = nullptr;
        DWORD process = 0;
        while ((window = ::FindWindowExW(nullptr, window, dialogClass, nullptr))) {
            ::GetWindowThreadProcessId(window, &process);
            if (process == ::GetCurrentProcessId() && ::IsWindowVisible(window))
                break;
        }
        return window;
    }

    std::function<void(HWND)> answer_;
    std::atomic<int> count_ = 0;
    std::jthread thread_;
};

}  // namespace Corvane
