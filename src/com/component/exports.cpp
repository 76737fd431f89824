// What the DLL exports. Everything it does stands elsewhere.
#include "com/async/thread_window.h"
#include "com/runtime/class_factory.h"
#include "com/runtime/dispatch.h"
#include "com/runtime/frame.h"
#include "com/runtime/module.h"
#include "com/runtime/registration.h"

#include <windows.h>

#include <cwchar>

using namespace Corvane::Com;

// The linked C++ runtime's; no header declares it.
namespace __gnu_cxx {       // NOLINT(bugprone-reserved-identifier): the runtime's name
void __freeres() noexcept;  // NOLINT(bugprone-reserved-identifier)
}

namespace {

HRESULT install(bool add, RegistrationScope scope, const wchar_t* function) noexcept {
    return frame(CLSID_NULL, function, [&] { add ? registerComponent(scope) : unregisterComponent(scope); });
}

}  // namespace

extern "C" {

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void* processEnds) {
    // The C++ runtime's reserve for exceptions: 73 KiB that a host would lose each time it frees the DLL.
    if (reason == DLL_PROCESS_DETACH && !processEnds)
        __gnu_cxx::__freeres();
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    return getClassObject(clsid, iid, object);
}

STDAPI DllCanUnloadNow() {
    ThreadWindow::releaseIdle();
    if (!Module::isIdle())
        return S_FALSE;
    DispatchTable::forgetAll();
    return S_OK;
}

STDAPI DllRegisterServer() {
    return install(true, RegistrationScope::machine, L"DllRegisterServer");
}

STDAPI DllUnregisterServer() {
    return install(false, RegistrationScope::machine, L"DllUnregisterServer");
}

// regsvr32 /n /i:user VetrelCorvane2.dll registers for the current user, without an administrator.
STDAPI DllInstall(BOOL add, PCWSTR commandLine) {
    const bool forUser = commandLine && ::_wcsicmp(commandLine, L"user") == 0;
    return install(add != FALSE, forUser ? RegistrationScope::user : RegistrationScope::machine,
                   L"DllInstall");
}

}  // extern "C"
