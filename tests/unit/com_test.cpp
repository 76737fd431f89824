// The frame around methods, asynchronous calls, and dates of scripts.
#include "../tools/scripthost/unscriptable.h"
#include "com/async/async.h"
#include "com/runtime/dates.h"
#include "com/runtime/frame.h"
#include "com/runtime/plain_object.h"
#include "core/moment.h"
#include "core/system_exception.h"
#include "platform/import_patch.h"
#include "soon.h"
#include "support.h"

#include <atomic>
#include <cstdlib>
#include <functional>
#include <optional>
#include <thread>
#include <utility>

using namespace Corvane;
using namespace Corvane::Com;
using namespace Corvane::Test;

namespace {

constexpr ErrorDescriptor contextOnly{0, "SetSite.Context", nullptr};

TEST(Frame, EveryRungOfTheLadder) {
    const struct {
        const char* name;
        std::function<void()> body;
        unsigned long hr;
        const wchar_t* description;
    } rows[] = {
        {"success", [] {}, S_OK, L"earlier"},
        {"own error", [] { throw Exception(E_BINARY_OUT_OF_RANGE); }, 0x80040212,
         L"[18] Байта с указанным индексом не существует"},
        {"own error without number", [] { throw Exception(contextOnly); }, 0x80040200, L"SetSite.Context"},
        {"own error with a system number", [] { throw CommDlgException(E_COMMON_DLG, 0x3002); }, 0x800402C8,
         L"[200] Ошибка при открытии диалога (0x3002)"},
        {"failed COM call", [] { throw ComException(E_COM_INVOKE, E_NOTIMPL); }, 0x80004001,
         L"Ошибка вызова метода класса COM компоненты"},
        {"failed COM call without text", [] { throw ComException(contextOnly, E_NOTIMPL); }, 0x80004001, L""},
        {"standard exception", [] { throw std::out_of_range("vector"); }, 0x800405E8, L"vector"},
        {"anything else", [] { throw 42; }, 0x800405E8, L"Неизвестная ошибка ActiveX"},
        {"out of memory", [] { throw std::bad_alloc(); }, 0x8007000E, L"earlier"},
        {"silent", [] { throw SilentFailure{E_NOINTERFACE}; }, 0x80004002, L"earlier"},
    };
    for (const auto& row : rows) {
        reportError(CLSID_NULL, L"earlier", E_FAIL);
        EXPECT_EQ(static_cast<unsigned long>(frame(CLSID_NULL, L"CTest::Method", row.body)), row.hr)
            << row.name;
        EXPECT_EQ(takeDescription(), row.description) << row.name;
    }
}

// What a host passes as a callback; counts its calls and keeps the error it was given.
class Callback final : public ScriptHost::Unscriptable<PlainObject<IDispatch>> {
public:
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                     VARIANT*, EXCEPINFO*, UINT*) override {
        ++calls;
        EXPECT_EQ(thread, ::GetCurrentThreadId());
        EXPECT_EQ(member, DISPID_VALUE);
        EXPECT_EQ(flags, DISPATCH_METHOD);
        const VARIANT& text = parameters->rgvarg[1];
        error = V_VT(&text) == VT_BSTR ? viewOf(V_BSTR(&text)) : std::wstring_view();
        return S_OK;
    }
    bool isHeld() {
        AddRef();
        return Release() > 1;
    }
    // Whether it is called so many times, soon, and then let go of.
    bool isCalled(int times) {
        return soon([&] { return calls == times && !isHeld(); });
    }

    int calls = 0;
    const DWORD thread = ::GetCurrentThreadId();
    std::wstring error;
};

bool isIdleWithoutTheWindow() {
    ThreadWindow::releaseIdle();
    return Module::isIdle();
}

// COM is entered and left for each callback; the thread itself stays in its apartment, and leaves it when it
// says so.
TEST(Async, WhateverIsThrownReachesTheCallbackOnItsThreadOnce) {
    std::thread([] {
        std::optional<Apartment> apartment(std::in_place);
        const std::pair<std::function<std::uint32_t()>, const wchar_t*> rows[] = {
            {[]() -> std::uint32_t { throw std::runtime_error("broken"); }, L"broken"},
            {[]() -> std::uint32_t { throw 1; }, L"Неизвестная ошибка ActiveX"},
        };
        for (const auto& [work, error] : rows) {
            const auto callback = makeObject<Callback>();
            start(callback.get(), Operation{L"work", work});
            EXPECT_TRUE(callback->isHeld()) << "the operation keeps the callback";
            EXPECT_TRUE(callback->isCalled(1));
            EXPECT_EQ(callback->error, error);
        }
        EXPECT_THROW(start(nullptr, Operation{L"work", [] { return 1u; }}), ComException);
        EXPECT_TRUE(isApartmentThreaded());
        const HWND window = ::FindWindowExW(HWND_MESSAGE, nullptr, L"Corvane2.9.9.41WindowClass", nullptr);
        wchar_t name[64] = L"";
        ::GetWindowTextW(window, name, 64);
        EXPECT_TRUE(std::wstring_view(name).starts_with(L"Corvane2.9.9.41WindowName"))
            << "the window's class or name";
        EXPECT_FALSE(Module::isIdle()) << "the thread's window";
        EXPECT_TRUE(isIdleWithoutTheWindow());
        apartment.reset();
        EXPECT_FALSE(isApartmentThreaded());
    }).join();
}

TEST(Async, NoOutcomeIsLostWhereTheQueueHasNoRoom) {
    const Apartment apartment;
    const Replaced patch(&::PostMessageW, [](auto...) { return FALSE; });
    const auto callback = makeObject<Callback>();
    for (int i = 0; i < 100; ++i)
        start(callback.get(), Operation{L"work", [] { return 1u; }});
    EXPECT_TRUE(callback->isCalled(100));
}

TEST(Async, NothingIsLeftOfAThreadThatEndedBeforeTheOutcome) {
    const auto callback = makeObject<Callback>();
    std::atomic<bool> finish{false};
    std::atomic<bool> posted{false};
    std::thread([&] {
        const Apartment apartment;
        // One outcome is posted and never fetched; the other comes when the thread is gone.
        start(callback.get(), Operation{L"work", [&] { posted = true; }});
        start(callback.get(), Operation{L"work", [&] {
                                            while (!finish)
                                                ::Sleep(1);
                                        }});
        while (!posted)
            ::Sleep(1);
    }).join();
    EXPECT_FALSE(Module::isIdle()) << "an operation is under way";
    finish = true;
    EXPECT_TRUE(soon(isIdleWithoutTheWindow));
    EXPECT_EQ(callback->calls, 0);
}

// Dates are tested in zones east and west of Greenwich, whose distance CORVANE_ZONE_MINUTES tells.
double zone() {
    char minutes[16] = "";
    ::GetEnvironmentVariableA("CORVANE_ZONE_MINUTES", minutes, sizeof(minutes));
    return std::atof(minutes) / 1440;
}

TEST(Dates, AreLocalToTheSecond) {
    // 2019-10-24T02:53:23.9Z is 43762 days from 1899-12-30, and some.
    const FILETIME time = fromTicks(132163592039000000);
    EXPECT_NEAR(toDate(time), 43762 + (2 * 3600 + 53 * 60 + 23) / 86400.0 + zone(), 1e-9);
    EXPECT_EQ(toTicks(fromDate(toDate(time))), 132163592030000000u);
}

TEST(Dates, TheEndsOfTheCalendarAreTheNearestDates) {
    // Excel's and automation's last second is 2958465.99998842592; 1601-01-01 is day -109205.
    const FILETIME last = fromTicks(2650467743990000000);  // 9999-12-31T23:59:59Z
    EXPECT_NEAR(toDate(last), zone() > 0 ? 2958465 + 86399 / 86400.0 : 2958465 + 86399 / 86400.0 + zone(),
                1e-9);
    // Before 1899-12-30 the time of the day is counted away from zero.
    const double first = zone() < 0 ? -109206 - (1 + zone()) : -109205 - zone();
    EXPECT_NEAR(toDate(fromTicks(0)), first, 1e-9);
    EXPECT_EQ(errorCode([] { toDate(fromTicks(~std::uint64_t{0})); }), E_FILETIME_TO_SYSTEMTIME_CAST.code);
}

}  // namespace
