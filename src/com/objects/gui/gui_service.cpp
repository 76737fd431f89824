#include "com/objects/gui/gui_service.h"

#include "com/runtime/arguments.h"
#include "gui/file_dialogs.h"

using namespace Corvane;
using namespace Corvane::Com;
using Gui::DialogKind;
using Gui::parseJsonOptions;

HRESULT CGuiService::ShowOpenDialog(BSTR options, BSTR* path) {
    return serviceFrame(L"CGuiService::ShowOpenDialog", [&] {
        const auto parsed = parseJsonOptions(DialogKind::openFile, viewOf(options));
        give(path, Gui::showOpenDialog(mainWindow(), parsed));
    });
}

HRESULT CGuiService::ShowSaveDialog(BSTR fileName, BSTR options, BSTR* path) {
    return serviceFrame(L"CGuiService::ShowSaveDialog", [&] {
        const auto parsed = parseJsonOptions(DialogKind::saveFile, viewOf(options));
        give(path, Gui::showSaveDialog(mainWindow(), viewOf(fileName), parsed));
    });
}

HRESULT CGuiService::SelectFolderDialog(BSTR options, BSTR* path) {
    return serviceFrame(L"CGuiService::SelectFolderDialog", [&] {
        const auto parsed = parseJsonOptions(DialogKind::selectFolder, viewOf(options));
        give(path, Gui::showSelectFolderDialog(mainWindow(), parsed));
    });
}

HRESULT CGuiService::ShowMultipleOpenDialog(BSTR options, BSTR* fileListString) {
    return serviceFrame(L"CGuiService::ShowMultipleOpenDialog", [&] {
        const auto parsed = parseJsonOptions(DialogKind::openFiles, viewOf(options));
        give(fileListString, Gui::showMultipleOpenDialog(mainWindow(), parsed));
    });
}
