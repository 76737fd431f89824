// GuiService in a page: who may have a dialog shown, what scripts pass, and what a page does meanwhile. The
// system's dialogs are replaced where the DLL calls them.
#include "../unit/system_dialogs.h"
#include "component.h"

namespace robustness {
namespace {

constexpr DISPID save = 2;
constexpr DISPID methods[] = {1, save, 3, 4};

class DialogsTest : public ComponentTest {
protected:
    ComPtr<IGuiService> gui(const wchar_t* page = TrustedPage::address) {
        return madeIn<IGuiService>(page, __uuidof(GuiService));
    }
    // A call as a script makes it; the options are the last argument.
    static LateCall call(IGuiService& gui, DISPID method, const VARIANT& options = variantOf(VT_EMPTY)) {
        std::vector<VARIANT> arguments{options};
        if (method == save)
            arguments.insert(arguments.begin(), variantOf(VT_EMPTY));
        return LateCall(gui, method, arguments);
    }

    Corvane::Test::SystemDialogs system_{::GetModuleHandleW(componentPath().c_str())};
};

TEST_F(DialogsTest, WhatScriptsPassForOptions) {
    const auto service = gui();
    const Bstr empty(L"");
    const Bstr comment(L"{/* a */ \"filterIndex\": 1 // b\n}");
    VARIANT nothing = variantOf(VT_DISPATCH);
    Variant text;
    const struct {
        VARIANT options;
        HRESULT failure = S_OK;
    } rows[] = {
        {variantOf(VT_EMPTY)},  // undefined, Empty
        {variantOf(VT_ERROR, DISP_E_PARAMNOTFOUND)},
        {variantOf(VT_BSTR)},  // vbNullString
        {variantTo(VT_BSTR, empty.get())},
        {variantTo(VT_BSTR, comment.get())},
        {variantOf(VT_NULL), DISP_E_TYPEMISMATCH},                         // null, Null
        {nothing, ::VariantChangeType(text.put(), &nothing, 0, VT_BSTR)},  // as the system converts it
    };
    const wchar_t* titles[] = {L"Выберите файл", L"Сохранить файл как", L"Выберите папку", L"Выберите файлы"};
    for (const auto& row : rows) {
        for (const DISPID method : methods) {
            system_.title.clear();
            const LateCall made = call(*service, method, row.options);
            EXPECT_EQ(made.failure(), row.failure) << &row - rows;
            EXPECT_EQ(system_.title, row.failure == S_OK ? titles[method - 1] : L"");
            if (row.failure == S_OK) {
                EXPECT_EQ(V_VT(&made.result.get()), VT_BSTR) << "an empty text where the user cancelled";
                EXPECT_EQ(viewOf(V_BSTR(&made.result.get())), L"");
            }
        }
    }
}

// Timers and callbacks of the page run while a dialog is open.
TEST_F(DialogsTest, APageDoesWhatItLikesWhileADialogIsOpen) {
    const DialogDriver driver([](HWND dialog) { ::SendDlgItemMessageW(dialog, IDCANCEL, BM_CLICK, 0, 0); });
    const auto other = gui();
    const auto strange = gui(strangePage);
    const Bstr brace(L"{");
    const VARIANT bad = variantTo(VT_BSTR, brace.get());
    for (const DISPID method : methods) {
        auto service = gui();
        system_.whileOpen = [&](HWND) {
            for (const DISPID second : methods) {
                for (IGuiService* each : {service.get(), other.get()}) {
                    const LateCall made = call(*each, second);
                    EXPECT_EQ(made.failure(), failureOf(200));
                    EXPECT_TRUE(made.description().starts_with(L"[200] Ошибка при открытии диалога (0xaa:"));
                }
                EXPECT_EQ(call(*strange, second, bad).failure(), accessDenied) << "of which it learns no more";
            }
            // The page is left, and lets go of what it had; the engine holds the object during the call.
            setSite(service, nullptr);
            service = {};
        };
        const ComPtr<IGuiService> engine = service;
        EXPECT_EQ(call(*engine, method).failure(), S_OK);
        system_.whileOpen = [](HWND) {};
        EXPECT_EQ(call(*engine, method).failure(), failureOf(0));
    }
    EXPECT_EQ(driver.count(), 16) << "the question about the strange page";
    EXPECT_EQ(system_.calls, 4);
}

}  // namespace
}  // namespace robustness
