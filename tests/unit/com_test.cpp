// The frame around methods, and asynchronous calls.
#include "../tools/scripthost/unscriptable.h"
#include "com/async/async.h"
#include "com/runtime/frame.h"
#include "core/system_exception.h"
#include "platform/import_patch.h"
#include "soon.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <thread>

using namespace Corvane;
using namespace Corvane::Com;
using namespace Corvane::Test;

namespace {

constexpr ErrorDescriptor contextOnly{0, "SetSite.Context", nullptr};

// Description of the thread's error information, which is consumed.
std::wstring takeDescription() {
    ComPtr<IErrorInfo> info;
    if (::GetErrorInfo(0, info.put()) != S_OK)
        return L"none";
    Bstr text;
    info->GetDescription(text.put());
    return std::wstring(text.view());
}

const std::wstring modulePath = LR"(C:\)" + std::wstring(257, L'p');

// A path that does not fit is cut, to the size of the buffer and with the NUL in it.
DWORD WINAPI pathOfModule(HMODULE, LPWSTR buffer, DWORD size) {
    const auto length = std::min<DWORD>(size, static_cast<DWORD>(modulePath.size()));
    modulePath.copy(buffer, length);
    if (length == size)
        buffer[length - 1] = L'\0';
    return length;
}

TEST(Module, PathMayBeAsLongAsTheBuffer) {
    const ImportPatch patch(&::GetModuleFileNameW, &pathOfModule);
    EXPECT_EQ(modulePath.size(), MAX_PATH);
    EXPECT_EQ(Module::path(), modulePath);
}

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
class Callback : public ScriptHost::Unscriptable<IDispatch> {
public:
    virtual ~Callback() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        *object = iid == IID_IUnknown || iid == IID_IDispatch ? this : nullptr;
        references += *object ? 1 : 0;
        return *object ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                                     VARIANT*, EXCEPINFO*, UINT*) override {
        ++calls;
        thread = ::GetCurrentThreadId();
        EXPECT_EQ(member, DISPID_VALUE);
        EXPECT_EQ(flags, DISPATCH_METHOD);
        const VARIANT& text = parameters->rgvarg[1];
        error = V_VT(&text) == VT_BSTR ? viewOf(V_BSTR(&text)) : std::wstring_view();
        return S_OK;
    }

    std::atomic<ULONG> references{1};
    int calls = 0;
    DWORD thread = 0;
    std::wstring error;
};

TEST(Async, WhateverIsThrownReachesTheCallbackOnItsThreadOnce) {
    const Apartment apartment;
    const struct {
        std::function<std::uint32_t()> work;
        const wchar_t* error;
    } rows[] = {
        {[]() -> std::uint32_t { throw Exception(E_CANCELED); }, L"[35] Операция отменена"},
        {[]() -> std::uint32_t { throw std::runtime_error("broken"); }, L"broken"},
        {[]() -> std::uint32_t { throw 1; }, L"Неизвестная ошибка ActiveX"},
    };
    for (const auto& row : rows) {
        Callback callback;
        start(&callback, Operation{L"work", row.work});
        EXPECT_EQ(callback.calls, 0);
        EXPECT_GT(callback.references, 1u) << "the operation keeps the callback";
        EXPECT_TRUE(soon([&] { return callback.calls > 0 && callback.references == 1; }));
        EXPECT_EQ(callback.calls, 1);
        EXPECT_EQ(callback.thread, ::GetCurrentThreadId());
        EXPECT_EQ(callback.error, row.error);
    }
    const HWND window = ::FindWindowExW(HWND_MESSAGE, nullptr, L"Corvane2.9.9.41WindowClass", nullptr);
    wchar_t name[64] = L"";
    ::GetWindowTextW(window, name, 64);
    EXPECT_TRUE(std::wstring_view(name).starts_with(L"Corvane2.9.9.41WindowName"))
        << "the window's class or name";
    EXPECT_FALSE(Module::isIdle()) << "the thread's window";
    ThreadWindow::releaseIdle();
    EXPECT_TRUE(Module::isIdle());
}

TEST(Async, NoOutcomeIsLostWhereTheQueueHasNoRoom) {
    const Apartment apartment;
    const ImportPatch patch(&::PostMessageW, &refusePost);
    Callback callback;
    for (int i = 0; i < 100; ++i)
        start(&callback, Operation{L"work", [] { return 1u; }});
    EXPECT_TRUE(soon([&] { return callback.calls == 100 && callback.references == 1; }));
    ThreadWindow::releaseIdle();
    EXPECT_TRUE(Module::isIdle());
}

TEST(Async, NothingIsLeftOfAThreadThatEndedBeforeTheOutcome) {
    Callback callback;
    std::atomic<bool> finish{false};
    std::atomic<bool> posted{false};
    std::thread([&] {
        const Apartment apartment;
        // One outcome is posted and never fetched; the other comes when the thread is gone.
        start(&callback, Operation{L"work", [&] { posted = true; }});
        start(&callback, Operation{L"work", [&] {
                                       while (!finish)
                                           ::Sleep(1);
                                   }});
        while (!posted)
            ::Sleep(1);
    }).join();
    EXPECT_FALSE(Module::isIdle()) << "an operation is under way";
    finish = true;
    EXPECT_TRUE(soon([] {
        ThreadWindow::releaseIdle();
        return Module::isIdle();
    }));
    EXPECT_EQ(callback.calls, 0);
}

// COM is entered and left for each callback; the thread itself stays in its apartment, and leaves it when it
// says so.
TEST(Async, TheThreadsApartmentIsItsOwn) {
    const auto inApartment = [] {
        APTTYPE type{};
        APTTYPEQUALIFIER qualifier{};
        return ::CoGetApartmentType(&type, &qualifier) == S_OK &&
               (type == APTTYPE_STA || type == APTTYPE_MAINSTA);
    };
    std::thread([&] {
        Callback callback;
        {
            const Apartment apartment;
            start(&callback, Operation{L"work", [] { return 1u; }});
            EXPECT_TRUE(soon([&] { return callback.calls == 1 && callback.references == 1; }));
            EXPECT_TRUE(inApartment());
            ThreadWindow::releaseIdle();
        }
        EXPECT_FALSE(inApartment());
    }).join();
}

TEST(Async, ACallbackThatIsNoneFailsAtTheStart) {
    const Apartment apartment;
    EXPECT_EQ(frame(CLSID_NULL, L"CTest::Method",
                    [] {
                        start(nullptr, Operation{L"work", [] { return 1u; }});
                    }),
              E_POINTER);
    ThreadWindow::releaseIdle();
    EXPECT_TRUE(Module::isIdle());
}

}  // namespace
