// Answers the dialogs of the calling thread from a thread of its own.
#pragma once

#include <windows.h>

#include <atomic>
#include <functional>
#include <iterator>
#include <string_view>
#include <thread>
#include <utility>

namespace Corvane {

class DialogDriver {
public:
    // `answer` is called with each dialog that appears; it must see to it that the dialog ends.
    explicit DialogDriver(std::function<void(HWND)> answer)
        : answer_(std::move(answer)),
          thread_([this, shower = ::GetCurrentThreadId()](const std::stop_token& stop) {
              HWND last = nullptr;
              for (; !stop.stop_requested(); ::Sleep(2)) {
                  const HWND dialog = visibleDialog(shower);
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
    static HWND visibleDialog(DWORD thread) {
        HWND dialog = nullptr;
        ::EnumThreadWindows(thread, isVisibleDialog, reinterpret_cast<LPARAM>(&dialog));
        return dialog;
    }

    static BOOL CALLBACK isVisibleDialog(HWND window, LPARAM found) {
        wchar_t name[16] = L"";
        ::GetClassNameW(window, name, static_cast<int>(std::size(name)));
        if (!::IsWindowVisible(window) || std::wstring_view(name) != L"#32770") {
            return TRUE;
        }
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }

    std::function<void(HWND)> answer_;
    std::atomic<int> count_ = 0;
    std::jthread thread_;
};

}  // namespace Corvane
