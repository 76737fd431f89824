// GuiService in a page: who may have a dialog shown, what scripts pass, and what a page does meanwhile. The
// system's dialogs are replaced where the DLL calls them.
#include "../unit/dialog_driver.h"
#include "../unit/system_dialogs.h"
#include "component.h"

namespace robustness {
namespace {

using Corvane::DialogDriver;

constexpr wchar_t strangePage[] = L"https://strange.example/";
constexpr HRESULT dialogFailed = static_cast<HRESULT>(0x800402C8);
constexpr HRESULT noPage = static_cast<HRESULT>(0x80040200);
constexpr HRESULT badFilter = static_cast<HRESULT>(0x800402C9);
constexpr HRESULT badOptions = static_cast<HRESULT>(0x800402CA);
constexpr DISPID save = 2;
constexpr DISPID methods[] = {1, save, 3, 4};

class DialogsTest : public ComponentTest {
protected:
    ComPtr<IGuiService> gui(const wchar_t* page = TrustedPage::address) {
        return serviceOf<IGuiService>(__uuidof(GuiService), page);
    }
    // A call as a script makes it; the options are the last argument.
    static LateCall call(IGuiService& gui, DISPID method, const VARIANT& options) {
        std::vector<VARIANT> arguments{options};
        if (method == save)
            arguments.insert(arguments.begin(), variantOf(VT_EMPTY));
        return LateCall(gui, method, arguments);
    }

    Corvane::Test::SystemDialogs system_{::GetModuleHandleW(componentPath().c_str())};
};

TEST_F(DialogsTest, WithoutTrustAPageLearnsNothingAndShowsNothing) {
    std::wstring captions;
    const DialogDriver driver([&](HWND dialog) {
        wchar_t caption[100] = L"";
        ::GetWindowTextW(dialog, caption, 100);
        captions += caption;
        ::SendDlgItemMessageW(dialog, IDCANCEL, BM_CLICK, 0, 0);
    });
    const auto strange = gui(strangePage);
    const auto nobody = component_.create<IGuiService>(__uuidof(GuiService));
    std::wstring expected;
    for (const wchar_t* options : {L"", L"{", L"{\"filter\": \"|\"}", L"{\"initialDir\": \"C:\\\\windows\"}",
                                   L"{\"initialDir\": \"C:\\\\no such folder\"}"}) {
        const Bstr text(options);
        for (const DISPID method : methods) {
            for (IGuiService* each : {strange.get(), nobody.get()}) {
                const LateCall made = call(*each, method, variantTo(VT_BSTR, text.get()));
                EXPECT_EQ(made.failure(), accessDenied);
                EXPECT_EQ(viewOf(made.exception.bstrDescription),
                          L"[1001] Доступ для текущего домена запрещен");
            }
            expected += L"Внимание";
        }
    }
    EXPECT_EQ(captions, expected) << "the question about the site each time, for the page that is one";
    EXPECT_EQ(system_.calls, 0);
    strange.query<IObjectWithSite>()->SetSite(nullptr);
}

TEST_F(DialogsTest, WhatScriptsPassForOptions) {
    const auto service = gui();
    const Bstr empty(L"");
    const Bstr noPairs(L"{\"filter\": \"a|*.a\"}");
    const Bstr comment(L"{/* a */ \"filterIndex\": 1 // b\n}");
    VARIANT nothing = variantOf(VT_DISPATCH);
    Variant text;
    const struct {
        VARIANT options;
        HRESULT failure;
    } rows[] = {
        {variantOf(VT_EMPTY), S_OK},  // undefined, Empty
        {variantOf(VT_ERROR, DISP_E_PARAMNOTFOUND), S_OK},
        {variantOf(VT_BSTR), S_OK},  // vbNullString
        {variantTo(VT_BSTR, empty.get()), S_OK},
        {variantTo(VT_BSTR, comment.get()), S_OK},
        {variantOf(VT_NULL), DISP_E_TYPEMISMATCH},                         // null, Null
        {nothing, ::VariantChangeType(text.put(), &nothing, 0, VT_BSTR)},  // as the system converts it
        {variantOf(VT_I4, 5), badOptions},
        {variantOf(VT_BOOL, VARIANT_TRUE), badOptions},
        {variantTo(VT_BSTR, noPairs.get()), badFilter},
    };
    const wchar_t* titles[] = {L"Выберите файл", L"Сохранить файл как", L"Выберите папку", L"Выберите файлы"};
    for (const auto& row : rows) {
        for (const DISPID method : methods) {
            const int before = system_.calls;
            const LateCall made = call(*service, method, row.options);
            EXPECT_EQ(made.failure(), row.failure) << &row - rows;
            EXPECT_EQ(system_.calls - before, row.failure == S_OK ? 1 : 0);
            if (row.failure == S_OK) {
                EXPECT_EQ(V_VT(&made.result.get()), VT_BSTR) << "an empty text where the user cancelled";
                EXPECT_EQ(viewOf(V_BSTR(&made.result.get())), L"");
                EXPECT_EQ(system_.title, titles[method - 1]);
            }
        }
    }
    service.query<IObjectWithSite>()->SetSite(nullptr);
}

// Timers and callbacks of the page run while a dialog is open.
TEST_F(DialogsTest, APageDoesWhatItLikesWhileADialogIsOpen) {
    const auto other = gui();
    const auto strange = gui(strangePage);
    const DialogDriver driver([](HWND dialog) { ::SendDlgItemMessageW(dialog, IDCANCEL, BM_CLICK, 0, 0); });
    for (const DISPID method : methods) {
        auto service = gui();
        system_.whileOpen = [&](HWND) {
            for (const DISPID second : methods) {
                for (IGuiService* each : {service.get(), other.get()}) {
                    const LateCall made = call(*each, second, variantOf(VT_EMPTY));
                    EXPECT_EQ(made.failure(), dialogFailed);
                    EXPECT_EQ(viewOf(made.exception.bstrDescription)
                                  .find(L"[200] Ошибка при открытии диалога (0xaa:"),
                              0U);
                }
                EXPECT_EQ(call(*strange, second, variantOf(VT_EMPTY)).failure(), accessDenied);
            }
            // The page is left, and lets go of what it had; the engine holds the object during the call.
            service.query<IObjectWithSite>()->SetSite(nullptr);
            service = {};
        };
        const ComPtr<IGuiService> engine = service;
        EXPECT_EQ(call(*engine, method, variantOf(VT_EMPTY)).failure(), S_OK);
        system_.whileOpen = [](HWND) {};
        EXPECT_EQ(call(*engine, method, variantOf(VT_EMPTY)).failure(), noPage);
    }
    EXPECT_EQ(driver.count(), 16) << "the question about the strange page";
    EXPECT_EQ(system_.calls, 4);
    for (const auto& each : {other, strange})
        each.query<IObjectWithSite>()->SetSite(nullptr);
}

}  // namespace
}  // namespace robustness
