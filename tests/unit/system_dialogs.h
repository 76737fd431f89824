// The system's dialogs about files, as tests want them.
#pragma once

#include "../platform/import_patch.h"

#include <windows.h>

#include <commdlg.h>
#include <shlobj.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

namespace Corvane::Test {

// In the place of the system's dialogs: notes what it was asked and answers as a test wants.
class SystemDialogs {
public:
    // In that of those which the module asks for.
    explicit SystemDialogs(HMODULE importer = ::GetModuleHandleW(nullptr))
        : open_("GetOpenFileNameW", &open, importer),
          save_("GetSaveFileNameW", &save, importer),
          extendedError_("CommDlgExtendedError", &extendedError, importer),
          browse_("SHBrowseForFolderW", &browse, importer),
          pathOf_("SHGetPathFromIDListW", &pathOf, importer) {
        current = this;
    }
    ~SystemDialogs() { current = nullptr; }
    SystemDialogs(const SystemDialogs&) = delete;
    SystemDialogs& operator=(const SystemDialogs&) = delete;

    int calls = 0;
    bool isSave = false;
    OPENFILENAMEW file{};
    BROWSEINFOW folder{};
    std::wstring title, filter, initialDir;  // of the last call; a dash where there was none
    std::wstring begin;                      // what stood in the buffer
    std::wstring answer;                     // what is put there; none: the user cancelled, or
    DWORD error = 0;                         // what the system calls its failure
    std::function<void(HWND)> whileOpen = [](HWND) {};

private:
    static BOOL answerFile(OPENFILENAMEW* dialog, bool isSave) {
        SystemDialogs& self = *current;
        ++self.calls;
        self.file = *dialog;
        self.isSave = isSave;
        self.begin = dialog->lpstrFile;
        self.title = dialog->lpstrTitle ? dialog->lpstrTitle : L"-";
        self.filter = dialog->lpstrFilter ? std::wstring(dialog->lpstrFilter, 13) : L"-";
        self.initialDir = dialog->lpstrInitialDir ? dialog->lpstrInitialDir : L"-";
        self.whileOpen(dialog->hwndOwner);
        EXPECT_LT(self.answer.size() + 1, dialog->nMaxFile);
        // Ended as the system ends a list of one string or more.
        *std::ranges::fill_n(std::ranges::copy(self.answer, dialog->lpstrFile).out, 1, L'\0') = L'\0';
        return !self.answer.empty();
    }
    static BOOL WINAPI open(OPENFILENAMEW* dialog) { return answerFile(dialog, false); }
    static BOOL WINAPI save(OPENFILENAMEW* dialog) { return answerFile(dialog, true); }
    static DWORD WINAPI extendedError() { return current->error; }
    static LPITEMIDLIST WINAPI browse(BROWSEINFOW* dialog) {
        SystemDialogs& self = *current;
        ++self.calls;
        self.folder = *dialog;
        self.title = dialog->lpszTitle ? dialog->lpszTitle : L"-";
        self.whileOpen(dialog->hwndOwner);
        return self.answer.empty() ? nullptr : static_cast<LPITEMIDLIST>(::CoTaskMemAlloc(1));
    }
    static BOOL WINAPI pathOf(LPCITEMIDLIST, LPWSTR path) {
        current->answer.copy(path, MAX_PATH);
        return current->answer.size() < MAX_PATH;
    }

    static inline SystemDialogs* current = nullptr;
    ImportPatch open_, save_, extendedError_, browse_, pathOf_;
};

}  // namespace Corvane::Test
