// The system's dialogs, which are replaced where the DLL calls them: about files, in a page, with what
// scripts pass and what a page does meanwhile; and about certificates.
#include "../unit/system_dialogs.h"
#include "component.h"

#include <prsht.h>
#include <wincrypt.h>

#include <cryptuiapi.h>

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
                EXPECT_EQ(call(*strange, second, bad).failure(), accessDenied)
                    << "of which it learns no more";
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

using Corvane::Test::ImportPatch;

constexpr HRESULT notOpened = failureOf(604);

class CertificatesTest : public ComponentTest {
protected:
    ComPtr<ICertificate> signer() {
        ComPtr<IBinaryObject> content;
        ComPtr<ICertificate> certificate;
        const auto path = std::filesystem::path(CORVANE_TEST_DATA "/pki/signer.pem").wstring();
        EXPECT_EQ(service()->BinaryObjectFromFile(Bstr(path).get(), content.put()), S_OK);
        EXPECT_EQ(serviceOf<ICryptoService>(__uuidof(CryptoService))
                      ->CreateCertificateFromContent(content.get(), certificate.put()),
                  S_OK);
        return certificate;
    }

    const HMODULE module_ = ::GetModuleHandleW(componentPath().c_str());
};

// The error with which the viewer ends.
DWORD viewerError = 0;

WINBOOL WINAPI view(PCCRYPTUI_VIEWCERTIFICATE_STRUCTW view, WINBOOL* changed) {
    EXPECT_EQ(view->dwSize, sizeof(*view));
    EXPECT_TRUE(view->pCertContext && !view->hwndParent && view->dwFlags == 0);
    EXPECT_EQ(changed, nullptr);
    ::SetLastError(viewerError);
    return viewerError == 0;
}

TEST_F(CertificatesTest, ViewerMayBeCancelled) {
    const ImportPatch patch("CryptUIDlgViewCertificateW", &view, module_);
    const auto certificate = signer();
    for (const auto& [error, expected] :
         {std::pair{0, S_OK}, {ERROR_CANCELLED, S_OK}, {ERROR_OUTOFMEMORY, failureOf(300)}}) {
        viewerError = static_cast<DWORD>(error);
        EXPECT_EQ(certificate->Display(), expected);
    }
}

// What the user does while the picker is open.
std::function<PCCERT_CONTEXT(HCERTSTORE)> whilePicking;

PCCERT_CONTEXT WINAPI pick(HCERTSTORE store, HWND parent, LPCWSTR title, LPCWSTR text, DWORD hidden,
                           DWORD flags, void*) {
    EXPECT_EQ(hidden, 0x10u) << "CRYPTUI_SELECT_LOCATION_COLUMN is not shown";
    EXPECT_TRUE(!parent && !title && !text && flags == 0);
    return whilePicking(store);
}

// The picker shows the store that another call closes in the meantime.
TEST_F(CertificatesTest, StoreThatIsClosedWhileInUseStaysOpenForItsUser) {
    const ImportPatch patch("CryptUIDlgSelectCertificateFromStore", &pick, module_);
    const auto store = serviceOf<ICertificateStore>(__uuidof(CertificateStore));
    ComPtr<ICertificate> picked;
    EXPECT_EQ(store->SelectCertificate(picked.put()), notOpened);
    ASSERT_EQ(store->Open(2, Bstr(L"CorvanePicked").get(), 1), S_OK);
    ComPtr<ICertificate> installed;
    ASSERT_EQ(store->Install(signer().get(), installed.put()), S_OK);
    whilePicking = [](HCERTSTORE) { return nullptr; };
    EXPECT_EQ(store->SelectCertificate(picked.put()), S_OK);
    EXPECT_EQ(picked.get(), nullptr) << "cancelled";

    whilePicking = [&](HCERTSTORE opened) {
        EXPECT_EQ(store->Close(), S_OK);
        return ::CertEnumCertificatesInStore(opened, nullptr);
    };
    EXPECT_EQ(store->SelectCertificate(picked.put()), S_OK);
    Bstr name;
    ASSERT_NE(picked.get(), nullptr);
    EXPECT_EQ(picked->get_CommonName(name.put()), S_OK);
    EXPECT_EQ(name.view(), L"Иванов Иван");
    EXPECT_EQ(store->get_name(name.put()), notOpened);
    EXPECT_EQ(installed->Uninstall(), S_OK);
    EXPECT_EQ(picked->Uninstall(), S_OK);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Microsoft\\SystemCertificates\\CorvanePicked");
}

}  // namespace
}  // namespace robustness
