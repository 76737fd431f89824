#include "gui/file_dialogs.h"

#include "core/check.h"
#include "core/handles.h"
#include "core/log.h"
#include "gui/apartment_thread.h"
#include "gui/chosen_files.h"
#include "gui/current_folder.h"
#include "gui/modal_dialog.h"

#include <commdlg.h>
#include <shlobj.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace Corvane::Gui {
namespace {

constexpr std::size_t longestPath = 32'767;
constexpr std::size_t longestName = 255;
constexpr std::size_t mostNames = 32'767;
// No screen shows more of a caption, but the system would lay out all of it.
constexpr std::size_t longestTitle = 1'000;

// One dialog: what is asked for, and what comes back.
struct Request {
    DialogKind kind;
    DialogOptions options;
    std::wstring buffer;  // what the dialog begins with, then what was chosen, in strings ended by NULs
};

DWORD flagsOf(DialogKind kind) noexcept {
    constexpr DWORD open =
        OFN_HIDEREADONLY | OFN_PATHMUSTEXIST | OFN_FILEMUSTEXIST | OFN_EXPLORER | OFN_ENABLESIZING;
    if (kind == DialogKind::saveFile)
        return OFN_HIDEREADONLY;
    return kind == DialogKind::openFiles ? open | OFN_ALLOWMULTISELECT : open;
}

// The options without what no dialog can do anything with, on which the system need not spend its time.
DialogOptions presentable(DialogOptions options) {
    options.title.resize(std::min(options.title.size(), longestTitle));
    if (options.initialDir.size() > longestPath)
        options.initialDir.clear();
    options.filterIndex = std::max(options.filterIndex, 0);
    return options;
}

const wchar_t* textOrNull(const std::wstring& text) noexcept {
    return text.empty() ? nullptr : text.c_str();
}

bool chooseFile(HWND host, Request& request) {
    const DialogOptions& options = request.options;
    request.buffer.resize(request.kind == DialogKind::openFiles
                              ? longestPath + mostNames * (longestName + 1) + 1
                              : longestPath + 1);
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof(dialog);
    dialog.hwndOwner = host;
    dialog.lpstrFilter = textOrNull(options.filter);
    dialog.nFilterIndex = static_cast<DWORD>(options.filterIndex);
    dialog.lpstrFile = request.buffer.data();
    dialog.nMaxFile = static_cast<DWORD>(request.buffer.size());
    dialog.lpstrInitialDir = textOrNull(options.initialDir);
    dialog.lpstrTitle = textOrNull(options.title);
    dialog.Flags = flagsOf(request.kind);
    const BOOL isChosen =
        request.kind == DialogKind::saveFile ? ::GetSaveFileNameW(&dialog) : ::GetOpenFileNameW(&dialog);
    if (isChosen)
        return true;
    const DWORD error = ::CommDlgExtendedError();
    if (error == 0)
        return false;
    writeLog(LogLevel::error, L"ModalDialog::open_file", hexNumber(error));
    throw CommDlgException(E_COMMON_DLG, error);
}

// The browser itself knows neither a caption nor a folder to begin with.
int CALLBACK onBrowserEvent(HWND browser, UINT event, LPARAM, LPARAM data) noexcept {
    const auto& options = *reinterpret_cast<const DialogOptions*>(data);
    if (event == BFFM_INITIALIZED && !options.title.empty())
        ::SetWindowTextW(browser, options.title.c_str());
    if (event == BFFM_INITIALIZED && !options.initialDir.empty())
        ::SendMessageW(browser, BFFM_SETSELECTIONW, TRUE,
                       reinterpret_cast<LPARAM>(options.initialDir.c_str()));
    return 0;
}

bool chooseFolder(HWND host, Request& request) {
    BROWSEINFOW dialog{};
    dialog.hwndOwner = host;
    dialog.lpszTitle = textOrNull(request.options.title);
    dialog.ulFlags = BIF_RETURNONLYFSDIRS | BIF_EDITBOX | BIF_NEWDIALOGSTYLE;
    dialog.lpfn = onBrowserEvent;
    dialog.lParam = reinterpret_cast<LPARAM>(&request.options);
    const CoTaskMemory<ITEMIDLIST> folder(::SHBrowseForFolderW(&dialog));
    if (!folder)
        return false;
    request.buffer.resize(MAX_PATH);
    if (!::SHGetPathFromIDListW(folder.get(), request.buffer.data())) {
        writeLog(LogLevel::error, L"SHGetPathFromIDListW", E_COMMON_DLG.message);
        throw Exception(E_COMMON_DLG);
    }
    return true;
}

// The choice as the dialog left it; empty when there is none.
std::wstring choose(HWND owner, DialogKind kind, const DialogOptions& options, std::wstring_view begin = {}) {
    Request request{kind, presentable(options), std::wstring(begin)};
    const OnlyDialog onlyDialog;
    const CurrentFolderKeeper currentFolder;
    bool isChosen = false;
    runInApartment([&] {
        isChosen = ModalDialog::run(owner, [&](HWND host) {
            return kind == DialogKind::selectFolder ? chooseFolder(host, request) : chooseFile(host, request);
        });
    });
    return isChosen ? std::move(request.buffer) : std::wstring();
}

}  // namespace

std::wstring showOpenDialog(HWND owner, const DialogOptions& options) {
    return std::wstring(firstString(choose(owner, DialogKind::openFile, options)));
}

std::wstring showMultipleOpenDialog(HWND owner, const DialogOptions& options) {
    return joinStrings(choose(owner, DialogKind::openFiles, options));
}

std::wstring showSaveDialog(HWND owner, std::wstring_view fileName, const DialogOptions& options) {
    constexpr wchar_t context[] = L"Corvane::Gui::showSaveDialog";
    writeLog(LogLevel::debug, context, L"[in] fileName: ", fileName);
    if (fileName.size() >= MAX_PATH) {
        constexpr char message[] = "File name greater then MAX_PATH";
        writeLog(LogLevel::error, context, message);
        throw std::length_error(message);
    }
    return std::wstring(firstString(choose(owner, DialogKind::saveFile, options, fileName)));
}

std::wstring showSelectFolderDialog(HWND owner, const DialogOptions& options) {
    return std::wstring(firstString(choose(owner, DialogKind::selectFolder, options)));
}

}  // namespace Corvane::Gui
