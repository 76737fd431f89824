// The system's dialogs, which are replaced where the DLL calls them: about files, in a page, with what
// scripts pass and what a page does meanwhile; and about certificates.
#include "component.h"

#include <commdlg.h>
#include <prsht.h>
#include <shlobj.h>
#include <wincrypt.h>

#include <cryptuiapi.h>

#include <utility>

namespace robustness {
namespace {

using Corvane::Test::ImportPatch;
using Corvane::Test::Replaced;
using namespace std::string_literals;

// In the place of the system's dialogs about files: notes what it was asked and answers as a test wants.
class SystemDialogs {
public:
    int calls = 0;
    std::wstring asked;   // for which dialog, with its caption; filter; folder, a dash for what is not given
    std::wstring begin;   // what stood in the buffer
    std::wstring answer;  // what is put there; none: the user cancelled, or
    DWORD error = 0;      // what the system calls its failure
    std::function<void(HWND)> whileOpen = [](HWND) {};

private:
    static std::wstring textOf(const wchar_t* text) { return text ? text : L"-"; }

    // Strings up to an empty one.
    static std::wstring filterOf(const wchar_t* filter) {
        std::wstring strings = filter ? L"" : L"-";
        for (; filter && *filter; filter += std::wcslen(filter) + 1)
            strings += filter + L"|"s;
        return strings;
    }
    BOOL answerFile(OPENFILENAMEW* dialog, const wchar_t* name) {
        ++calls;
        asked = name + std::to_wstring(dialog->Flags) + L": " + textOf(dialog->lpstrTitle) + L"; " +
                filterOf(dialog->lpstrFilter) + std::to_wstring(dialog->nFilterIndex) + L"; " +
                textOf(dialog->lpstrInitialDir);
        begin = dialog->lpstrFile;
        EXPECT_EQ(dialog->lStructSize, sizeof(*dialog));
        whileOpen(dialog->hwndOwner);
        // Ended as the system ends a list of one string or more.
        EXPECT_LT(answer.size() + 1, dialog->nMaxFile);
        dialog->lpstrFile[answer.copy(dialog->lpstrFile, dialog->nMaxFile - 2)] = L'\0';
        return !answer.empty();
    }
    static BOOL WINAPI open(OPENFILENAMEW* dialog) { return current->answerFile(dialog, L"open "); }
    static BOOL WINAPI save(OPENFILENAMEW* dialog) { return current->answerFile(dialog, L"save "); }
    static DWORD WINAPI extendedError() { return current->error; }
    // The window of the folder browser is given its caption and where to begin.
    static LRESULT CALLBACK browser(HWND, UINT message, WPARAM, LPARAM text) {
        if (message == WM_SETTEXT || message == BFFM_SETSELECTIONW)
            current->asked += L"; "s + reinterpret_cast<const wchar_t*>(text);
        return TRUE;
    }
    static LPITEMIDLIST WINAPI browse(BROWSEINFOW* dialog) {
        ++current->calls;
        current->asked = L"folder " + std::to_wstring(dialog->ulFlags) + L": " + textOf(dialog->lpszTitle);
        const HWND window = Corvane::makeOwner();
        ::SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(browser));
        dialog->lpfn(window, BFFM_INITIALIZED, 0, dialog->lParam);
        ::DestroyWindow(window);
        current->whileOpen(dialog->hwndOwner);
        return current->answer.empty() ? nullptr : static_cast<LPITEMIDLIST>(::CoTaskMemAlloc(1));
    }
    static BOOL WINAPI pathOf(LPCITEMIDLIST, LPWSTR path) {
        current->answer.copy(path, MAX_PATH);
        return current->answer.size() < MAX_PATH;
    }

    static inline SystemDialogs* current = nullptr;
    HMODULE importer_ = (current = this, ::GetModuleHandleW(componentPath().c_str()));
    ImportPatch open_{"GetOpenFileNameW", &open, importer_}, save_{"GetSaveFileNameW", &save, importer_},
        extendedError_{"CommDlgExtendedError", &extendedError, importer_},
        browse_{"SHBrowseForFolderW", &browse, importer_},
        pathOf_{"SHGetPathFromIDListW", &pathOf, importer_};
};

constexpr DISPID openFile = 1, saveFile = 2, selectFolder = 3, openFiles = 4;
constexpr DISPID fileDialogs[] = {openFile, saveFile, openFiles};
constexpr DISPID allDialogs[] = {openFile, saveFile, openFiles, selectFolder};

// Everything is called from a thread of the multithreaded apartment, in which the folder browser fails
// without a word; scripts call from one of their own.
class FileDialogs : public ComponentTest {
protected:
    // In a trusted page of a browser with that window.
    ComPtr<IGuiService> guiOf(HWND window = nullptr) {
        host_.answers.clear();
        host_.isTopContainer = true;
        host_.url = TrustedPage::address;
        host_.window = window;
        return serviceOf<IGuiService>(__uuidof(GuiService));
    }
    // A call as a script makes it; the options are the last argument.
    static LateCall call(IGuiService& gui, DISPID dialog, const VARIANT& options = variantOf(VT_EMPTY),
                         std::wstring_view name = {}) {
        const Bstr text(name);
        std::vector<VARIANT> arguments{options};
        if (dialog == saveFile)
            arguments.insert(arguments.begin(), variantTo(VT_BSTR, text.get()));
        return LateCall(gui, dialog, arguments);
    }
    static std::wstring resultOf(const LateCall& made) {
        EXPECT_EQ(made.failure(), S_OK) << made.failure();
        return V_VT(&made.result.get()) == VT_BSTR ? std::wstring(viewOf(V_BSTR(&made.result.get())))
                                                   : L"none";
    }
    std::wstring resultOf(DISPID dialog, std::wstring_view options = {}, std::wstring_view name = {}) {
        const Bstr text(options);
        return resultOf(call(*guiOf(), dialog, variantTo(VT_BSTR, text.get()), name));
    }

    SystemDialogs system_;
};

TEST_F(FileDialogs, TheSystemIsAskedAsTheOptionsSay) {
    const std::wstring longText(100'000, L'a');
    const std::wstring extreme = L"{\"filterIndex\": -1, \"filter\": \"||\", \"title\": \"" + longText +
                                 L"\", \"initialDir\": \"" + longText + L"\"}";
    const struct {
        DISPID dialog;
        std::wstring call, title;
    } rows[] = {
        {openFile, L"open 8919044: ", L"Выберите файл"},    // 0x881804
        {openFiles, L"open 8919556: ", L"Выберите файлы"},  // 0x881A04
        {saveFile, L"save 4: ", L"Сохранить файл как"},
        {selectFolder, L"folder 81: ", L"Выберите папку"},  // 0x51
    };
    for (const auto& row : rows) {
        const auto expect = [&](const std::wstring& title, const std::wstring& filter,
                                const std::wstring& folder = {}) {
            std::wstring expected = row.call + title;
            if (row.dialog != selectFolder)
                expected += filter + (folder.empty() ? L"; -" : folder);
            else if (title != L"-")  // the text is the caption, too
                expected.append(L"; ").append(title) += folder;
            EXPECT_EQ(system_.asked, expected);
        };
        const std::wstring defaults = L"; Все файлы|*.*|Текстовые файлы|*.TXT|0";
        // undefined; left out; vbNullString
        for (const VARIANT& nothing :
             {variantOf(VT_EMPTY), variantOf(VT_ERROR, DISP_E_PARAMNOTFOUND), variantOf(VT_BSTR)}) {
            EXPECT_EQ(resultOf(call(*guiOf(), row.dialog, nothing)), L"") << "the user cancelled";
            expect(row.title, defaults);
        }
        EXPECT_EQ(resultOf(row.dialog, L"{/* a */ \"more\": [1], \"Title\": 1 // b\n}"), L"");
        expect(row.title, defaults);
        resultOf(row.dialog,
                 LR"({"title": "\u05d0 \ud83d\ude00 Ж", "filter": "Документы|*.doc;*.docx|",
                                  "initialDir": "C:\\Папка", "filterIndex": 7, "more": {}})",
                 L"имя.txt");
        expect({0x05D0, L' ', 0xD83D, 0xDE00, L' ', L'Ж'}, L"; Документы|*.doc;*.docx|7", L"; C:\\Папка");
        EXPECT_EQ(system_.begin, row.dialog == saveFile ? L"имя.txt" : L"");
        resultOf(row.dialog, L"{\"title\": null, \"filter\": \"\"}");
        expect(L"-", L"; -0");
        // No screen shows more of a caption, and no path is that long.
        resultOf(row.dialog, extreme);
        expect(longText.substr(0, 1'000), L"; 0");
    }
}

TEST_F(FileDialogs, ChoicesComeBackWhole) {
    system_.answer.assign(32'766, L'd');
    for (const DISPID dialog : fileDialogs)
        EXPECT_EQ(resultOf(dialog, {}, std::wstring(259, L'n')), system_.answer);
    // As many files as there is room for, with the longest names.
    system_.answer = L"C:\\dir";
    std::wstring expected = system_.answer;
    for (int i = 0; i < 32'767; ++i) {
        const std::wstring name(255, static_cast<wchar_t>(L'a' + i % 26));
        system_.answer += L'\0' + name;
        expected += L'|' + name;
    }
    EXPECT_EQ(resultOf(openFiles), expected);
}

TEST_F(FileDialogs, WhileOneIsOpenThereIsNoOtherAndTheOwnerIsDisabled) {
    const auto before = std::filesystem::current_path();
    const auto other = guiOf();
    const DWORD caller = ::GetCurrentThreadId();
    system_.answer = L"C:\\a";
    for (const DISPID dialog : allDialogs) {
        const HWND owner = Corvane::makeOwner();
        auto service = guiOf(owner);
        const ComPtr<IGuiService> engine = service;
        system_.whileOpen = [&](HWND host) {
            EXPECT_TRUE(Corvane::Test::isApartmentThreaded());
            EXPECT_EQ(::GetWindow(host, GW_OWNER), owner);
            EXPECT_FALSE(::IsWindowVisible(host));
            EXPECT_TRUE(::GetWindowLongPtrW(host, GWL_EXSTYLE) & WS_EX_TOPMOST);
            // The system told the owner, which answered though its thread waits.
            EXPECT_FALSE(::IsWindowEnabled(owner));
            // The message that has the dialog shown, from somebody else: there is one dialog for a call.
            ::SendMessageW(host, WM_USER + 2, 0, 0);
            // Timers and callbacks of the page run meanwhile.
            for (const DISPID second : allDialogs) {
                for (IGuiService* each : {service.get(), other.get()}) {
                    const LateCall made = call(*each, second);
                    EXPECT_EQ(made.failure(), failureOf(200));
                    EXPECT_TRUE(made.description().starts_with(L"[200] Ошибка при открытии диалога (0xaa:"));
                }
            }
            // The page is left, and lets go of what it had; the engine holds the object during the call.
            setSite(service, nullptr);
            service = {};
            ::SetCurrentDirectoryW(L"C:\\");
            ::PostThreadMessageW(caller, WM_QUIT, 7, 0);
        };
        EXPECT_EQ(resultOf(call(*engine, dialog)), system_.answer);
        EXPECT_EQ(std::exchange(system_.calls, 0), 1);
        EXPECT_TRUE(::IsWindowEnabled(owner));
        EXPECT_EQ(std::filesystem::current_path(), before) << "is kept";
        MSG message{};
        EXPECT_TRUE(::PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
        EXPECT_EQ(message.wParam, 7U) << "what ends the caller's own loop";
        ::DestroyWindow(owner);
    }
}

TEST_F(FileDialogs, FailuresOfTheSystemTravelToTheCaller) {
    system_.error = 0x3003;
    for (const DISPID dialog : fileDialogs)
        EXPECT_EQ(call(*guiOf(), dialog).description(), L"[200] Ошибка при открытии диалога (0x3003)");
    system_.answer.assign(MAX_PATH, L'f');
    EXPECT_EQ(call(*guiOf(), selectFolder).failure(), failureOf(200)) << "a folder whose path is too long";

    const HWND gone = Corvane::makeOwner();
    ::DestroyWindow(gone);
    EXPECT_EQ(call(*guiOf(gone), openFile).failure(), failureOf(202));
    const auto service = guiOf();
    system_.calls = 0;
    const Replaced<BOOL, HWND, UINT, WPARAM, LPARAM> patch(
        "PostMessageW", ::GetModuleHandleW(componentPath().c_str()), [](auto...) { return FALSE; });
    EXPECT_EQ(call(*service, openFile).failure(), failureOf(202));
    EXPECT_EQ(system_.calls, 0);
}

// Certificates in the system's dialogs.
class CertificatesTest : public ComponentTest {
protected:
    CertificatesTest() {
        ComPtr<IBinaryObject> content;
        const auto path = std::filesystem::path(CORVANE_TEST_DATA "/pki/signer.pem").wstring();
        EXPECT_EQ(service()->BinaryObjectFromFile(Bstr(path).get(), content.put()), S_OK);
        EXPECT_EQ(serviceOf<ICryptoService>(__uuidof(CryptoService))
                      ->CreateCertificateFromContent(content.get(), certificate_.put()),
                  S_OK);
    }

    ComPtr<ICertificate> certificate_;
    const HMODULE module_ = ::GetModuleHandleW(componentPath().c_str());
};

TEST_F(CertificatesTest, ViewerMayBeCancelled) {
    DWORD viewerError = 0;
    const Replaced<BOOL, PCCRYPTUI_VIEWCERTIFICATE_STRUCTW, BOOL*> patch(
        "CryptUIDlgViewCertificateW", module_, [&](auto view, auto changed) {
            EXPECT_TRUE(view->dwSize == sizeof(*view) && view->pCertContext && !view->hwndParent);
            EXPECT_TRUE(view->dwFlags == 0 && !changed);
            ::SetLastError(viewerError);
            return viewerError == 0;
        });
    for (const auto& [error, expected] :
         {std::pair{0, S_OK}, {ERROR_CANCELLED, S_OK}, {ERROR_OUTOFMEMORY, failureOf(300)}}) {
        viewerError = static_cast<DWORD>(error);
        EXPECT_EQ(certificate_->Display(), expected);
    }
}

// The picker shows the store that another call closes in the meantime.
TEST_F(CertificatesTest, StoreThatIsClosedWhileInUseStaysOpenForItsUser) {
    std::function<PCCERT_CONTEXT(HCERTSTORE)> whilePicking = [](HCERTSTORE) { return nullptr; };
    const Replaced<PCCERT_CONTEXT, HCERTSTORE, HWND, LPCWSTR, LPCWSTR, DWORD, DWORD, void*> patch(
        "CryptUIDlgSelectCertificateFromStore", module_,
        [&](HCERTSTORE store, HWND parent, auto title, auto text, DWORD hidden, DWORD flags, void*) {
            EXPECT_EQ(hidden, 0x10u) << "CRYPTUI_SELECT_LOCATION_COLUMN is not shown";
            EXPECT_TRUE(!parent && !title && !text && flags == 0);
            return whilePicking(store);
        });
    const auto store = serviceOf<ICertificateStore>(__uuidof(CertificateStore));
    ComPtr<ICertificate> picked;
    EXPECT_EQ(store->SelectCertificate(picked.put()), failureOf(604)) << "it is not open";
    ASSERT_EQ(store->Open(2, Bstr(L"CorvanePicked").get(), 1), S_OK);
    ComPtr<ICertificate> installed;
    ASSERT_EQ(store->Install(certificate_.get(), installed.put()), S_OK);
    EXPECT_EQ(store->SelectCertificate(picked.put()), S_OK);
    ASSERT_EQ(picked.get(), nullptr) << "cancelled";

    whilePicking = [&](HCERTSTORE opened) {
        EXPECT_EQ(store->Close(), S_OK);
        return ::CertEnumCertificatesInStore(opened, nullptr);
    };
    EXPECT_EQ(store->SelectCertificate(picked.put()), S_OK);
    ASSERT_NE(picked.get(), nullptr);
    EXPECT_EQ(installed->Uninstall(), S_OK);
    EXPECT_EQ(picked->Uninstall(), S_OK);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Microsoft\\SystemCertificates\\CorvanePicked");
}

}  // namespace
}  // namespace robustness
