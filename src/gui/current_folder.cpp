#include "gui/current_folder.h"

#include "core/handle.h"

namespace Corvane::Gui {

CurrentFolderKeeper::CurrentFolderKeeper() {
    // With the terminating zero while the buffer is too small, without it afterwards.
    DWORD length = ::GetCurrentDirectoryW(0, nullptr);
    while (length > folder_.size()) {
        folder_.resize(length);
        length = ::GetCurrentDirectoryW(length, folder_.data());
    }
    folder_.resize(length);
}

CurrentFolderKeeper::~CurrentFolderKeeper() {
    const LastErrorKeeper error;
    if (!folder_.empty())
        ::SetCurrentDirectoryW(folder_.c_str());
}

}  // namespace Corvane::Gui
