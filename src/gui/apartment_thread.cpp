#include "gui/apartment_thread.h"

#include "core/check.h"
#include "core/handles.h"

#include <exception>

namespace Corvane::Gui {
namespace {

bool isInSingleThreadedApartment() noexcept {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    return SUCCEEDED(::CoGetApartmentType(&type, &qualifier)) &&
           (type == APTTYPE_STA || type == APTTYPE_MAINSTA);
}

class Apartment {
public:
    Apartment() {
        checkHresult(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE),
                     E_COMMON_DLG, L"CoInitializeEx");
    }
    ~Apartment() { ::CoUninitialize(); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

struct Job {
    const std::function<void()>& work;
    std::exception_ptr error;
};

DWORD WINAPI runJob(void* data) noexcept {
    Job& job = *static_cast<Job*>(data);
    try {
        const Apartment apartment;
        job.work();
    } catch (...) {
        job.error = std::current_exception();
    }
    return 0;
}

// Windows of the calling thread, the owner of a dialog among them, answer while it waits. What ends the
// thread's own message loop is put back for it.
void waitFor(HANDLE thread) noexcept {
    bool quit = false;
    int status = 0;
    while (::MsgWaitForMultipleObjects(1, &thread, FALSE, INFINITE, QS_ALLINPUT) == WAIT_OBJECT_0 + 1) {
        for (MSG message; ::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
            if (message.message == WM_QUIT) {
                quit = true;
                status = static_cast<int>(message.wParam);
            }
            ::TranslateMessage(&message);
            ::DispatchMessageW(&message);
        }
    }
    if (quit)
        ::PostQuitMessage(status);
}

}  // namespace

void runInApartment(const std::function<void()>& work) {
    if (isInSingleThreadedApartment()) {
        work();
        return;
    }
    Job job{work, nullptr};
    ThreadHandle thread(::CreateThread(nullptr, 0, runJob, &job, 0, nullptr));
    checkWin32(static_cast<bool>(thread), E_COMMON_DLG, L"CreateThread");
    waitFor(thread.get());
    if (job.error)
        std::rethrow_exception(job.error);
}

}  // namespace Corvane::Gui
