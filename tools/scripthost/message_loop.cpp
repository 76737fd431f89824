#include "message_loop.h"

#include "exit.h"

namespace ScriptHost {
namespace {

int depth = 0;

void serveWaiting() {
    MSG message{};
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT)
            quit(static_cast<UINT>(message.wParam));
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
}

}  // namespace

void pumpMessages(DWORD milliseconds) {
    ++depth;
    const ULONGLONG end = ::GetTickCount64() + milliseconds;
    serveWaiting();
    for (ULONGLONG now = ::GetTickCount64(); now < end; now = ::GetTickCount64()) {
        ::MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(end - now), QS_ALLINPUT,
                                      MWMO_INPUTAVAILABLE);
        serveWaiting();
    }
    --depth;
}

bool isPumping() {
    return depth > 0;
}

}  // namespace ScriptHost
