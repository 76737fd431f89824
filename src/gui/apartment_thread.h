// Work that needs a single-threaded apartment, for callers whose thread may be in none.
#pragma once

#include <functional>

namespace Corvane::Gui {

// Runs `work` and returns when it has ended; what it throws passes on. It runs on the calling thread where
// that is in a single-threaded apartment, else on a thread of its own with such an apartment, while messages
// of the calling thread are dispatched. Throws Win32Exception E_COMMON_DLG when that thread cannot be
// started, ComException E_COMMON_DLG when it gets no apartment.
void runInApartment(const std::function<void()>& work);

}  // namespace Corvane::Gui
