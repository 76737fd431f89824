#include "com/objects/about/about.h"

#include "com/diagnose/diagnose.h"
#include "com/runtime/arguments.h"
#include "com/runtime/registration.h"
#include "com/runtime/version_text.h"
#include "core/windows_version.h"

using namespace Corvane;
using namespace Corvane::Com;

HRESULT CAbout::get_Version(BSTR* version) {
    return frame(L"CAbout::get_Version", [&] { give(version, versionText); });
}

HRESULT CAbout::get_RegVersion(BSTR* version) {
    return frame(L"CAbout::get_RegVersion", [&] { give(version, registeredVersion()); });
}

HRESULT CAbout::get_HasAccess(VARIANT_BOOL* access) {
    bool allowed = false;
    try {
        checkAccess(false);
        allowed = true;
    } catch (...) {
        // Whatever the reason, the answer is no.
    }
    return frame(L"CAbout::get_HasAccess", [&] { give(access, variantBool(allowed)); });
}

HRESULT CAbout::get_WinVersion(BSTR* version) {
    return frame(L"CAbout::get_WinVersion", [&] { give(version, windowsVersion()); });
}

HRESULT CAbout::Diagnose(BSTR* report) {
    return serviceFrame(L"CAbout::Diagnose", [&] { give(report, diagnose()); });
}
