#include "gui/dialog_box.h"

#include "core/handle.h"

namespace Corvane::Gui {
namespace {

bool isSeen() noexcept {
    USEROBJECTFLAGS station{};
    return !::GetUserObjectInformationW(::GetProcessWindowStation(), UOI_FLAGS, &station, sizeof(station),
                                        nullptr) ||
           (station.dwFlags & WSF_VISIBLE) != 0;
}

// Whether the dialog that was not shown failed for its owner, which is there all the same.
bool isOutOfReach(HWND owner) noexcept {
    const LastErrorKeeper keeper;
    const DWORD error = ::GetLastError();
    return (error == ERROR_ACCESS_DENIED || error == ERROR_INVALID_WINDOW_HANDLE) && ::IsWindow(owner);
}

}  // namespace

INT_PTR showDialog(HINSTANCE module, WORD id, HWND owner, DLGPROC procedure, LPARAM data) noexcept {
    if (!isSeen()) {
        ::SetLastError(ERROR_REQUIRES_INTERACTIVE_WINDOWSTATION);
        return -1;
    }
    const auto show = [&](HWND window) {
        return ::DialogBoxParamW(module, MAKEINTRESOURCEW(id), window, procedure, data);
    };
    ::SetLastError(ERROR_SUCCESS);
    const INT_PTR result = show(owner);
    return result <= 0 && isOutOfReach(owner) ? show(nullptr) : result;
}

}  // namespace Corvane::Gui
