// Apartments, the thread's error information, and waiting for what another thread or the clock brings about.
#pragma once

#include "com/runtime/automation.h"
#include "com/runtime/ptr.h"

#include <windows.h>

#include <objbase.h>

#include <functional>
#include <string>

namespace Corvane::Test {

// The thread is in one as long as it lives.
class Apartment {
public:
    explicit Apartment(DWORD kind = COINIT_APARTMENTTHREADED) { ::CoInitializeEx(nullptr, kind); }
    ~Apartment() { ::CoUninitialize(); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
};

// Whether the thread is in a single-threaded one.
inline bool isApartmentThreaded() {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    return ::CoGetApartmentType(&type, &qualifier) == S_OK &&
           (type == APTTYPE_STA || type == APTTYPE_MAINSTA);
}

// The description of the thread's error information, which is consumed.
inline std::wstring takeDescription() {
    Com::ComPtr<IErrorInfo> info;
    Com::Bstr text;
    if (::GetErrorInfo(0, info.put()) != S_OK || info->GetDescription(text.put()) != S_OK)
        return L"none";
    return std::wstring(text.view());
}

// Whether `condition` comes true: at once, or within the minute that a busy machine may need. The thread's
// messages are delivered meanwhile.
inline bool soon(const std::function<bool()>& condition) {
    for (const ULONGLONG end = ::GetTickCount64() + 60'000; !condition();) {
        if (::GetTickCount64() > end)
            return false;
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, 5, QS_ALLINPUT);
        for (MSG message; ::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);)
            ::DispatchMessageW(&message);
    }
    return true;
}

}  // namespace Corvane::Test
