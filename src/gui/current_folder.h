// The process's current folder, which the system's file dialogs leave where the user went.
#pragma once

#include <string>

namespace Corvane::Gui {

// The folder that is the current one at its beginning is so again at its end.
class CurrentFolderKeeper {
public:
    CurrentFolderKeeper();
    ~CurrentFolderKeeper();
    CurrentFolderKeeper(const CurrentFolderKeeper&) = delete;
    CurrentFolderKeeper& operator=(const CurrentFolderKeeper&) = delete;

private:
    std::wstring folder_;  // empty where the system does not tell it
};

}  // namespace Corvane::Gui
