// Answers the file dialogs of another program, as a user who types a path and presses Enter, so that scripts
// that ask for files run from beginning to end in tests.
#include <windows.h>

#include <cstdio>
#include <cwchar>
#include <string>

namespace {

constexpr char help[] = R"(usage: dialogdriver CAPTION PATH [CAPTION PATH]...
Waits for a dialog with each CAPTION in turn, types PATH as the file's name and confirms; an empty PATH cancels. Ends with
status 0 when the last one has closed, with 1 when one does not come or stay within two minutes.
)";

constexpr int nameEdit = 1148;  // cmb13 of dlgs.h
constexpr ULONGLONG limitMilliseconds = 120'000;
constexpr DWORD pauseMilliseconds = 10;

// Whether `condition` holds within the limit.
template <class Condition>
bool waitUntil(Condition condition) {
    const ULONGLONG end = ::GetTickCount64() + limitMilliseconds;
    while (!condition()) {
        if (::GetTickCount64() > end)
            return false;
        ::Sleep(pauseMilliseconds);
    }
    return true;
}

HWND findDialog(const wchar_t* caption) {
    const HWND dialog = ::FindWindowW(L"#32770", caption);
    return ::IsWindowVisible(dialog) ? dialog : nullptr;
}

// The control takes the text only when the dialog is ready for it.
bool type(HWND dialog, const std::wstring& path) {
    ::SetDlgItemTextW(dialog, nameEdit, path.c_str());
    std::wstring typed(path.size() + 2, L'\0');
    typed.resize(::GetDlgItemTextW(dialog, nameEdit, typed.data(), static_cast<int>(typed.size())));
    return typed == path;
}

bool answer(const wchar_t* caption, const std::wstring& path) {
    HWND dialog = nullptr;
    if (!waitUntil([&] { return (dialog = findDialog(caption)) != nullptr; }))
        return false;
    if (!path.empty() && !waitUntil([&] { return type(dialog, path); }))
        return false;
    ::PostMessageW(dialog, WM_COMMAND, path.empty() ? IDCANCEL : IDOK, 0);
    return waitUntil([&] { return !::IsWindow(dialog); });
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    if (count < 3 || count % 2 == 0) {
        std::fputs(help, stderr);
        return 2;
    }
    for (int i = 1; i < count; i += 2) {
        if (!answer(arguments[i], arguments[i + 1])) {
            std::fputs("a dialog did not come, or did not close\n", stderr);
            return 1;
        }
    }
    return 0;
}
