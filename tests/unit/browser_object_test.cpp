#include "com/browser_object.h"

#include "core/system_exception.h"
#include "core/trusted_sites.h"
#include "dialog_driver.h"
#include "fake_host.h"
#include "gui/dialog_with_check_box.h"
#include "scratch_registry.h"
#include "support.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace Corvane;
using Com::BrowserSite;

namespace {

// What checkAccess threw: the name of the descriptor, its message, and the HRESULT of a COM call.
using Failure = std::tuple<std::string, std::wstring, HRESULT>;

constexpr int rememberId = 1001;

std::wstring textOf(HWND window) {
    wchar_t text[300] = L"";
    ::GetWindowTextW(window, text, 300);
    return text;
}

class BrowserObject : public testing::Test {
protected:
    ~BrowserObject() override {
        object_.setSite(nullptr);
        EXPECT_EQ(host_.references, 0);
    }

    static void trust(const std::wstring& pattern) {
        ScratchRegistry::addValue(HKEY_CURRENT_USER, trustedSitesKey, pattern);
    }

    void visit(const std::wstring& url) {
        host_.url = url;
        ASSERT_EQ(object_.setSite(host_.site()), S_OK);
    }

    // Empty when access is given.
    Failure failure(bool mayAsk = false) const {
        try {
            object_.checkAccess(mayAsk);
        } catch (const ComException& exception) {
            return {exception.what(), exception.message(), exception.hr()};
        } catch (const Exception& exception) {
            return {exception.what(), exception.message(), S_OK};
        }
        return {};
    }

    bool isAllowed(bool mayAsk = false) const {
        const std::string name = std::get<0>(failure(mayAsk));
        EXPECT_TRUE(name.empty() || name == "E_ACCESS_DENIED") << name;
        return name.empty();
    }

    ScratchRegistry registry_;
    FakeHost host_;
    BrowserSite object_;
};

TEST_F(BrowserObject, EveryFailingStepIsKeptAndRaised) {
    const wchar_t* noProvider = L"Ошибка доступа к реализации интерфейса IServiceProvider";
    const wchar_t* noBrowser = L"Ошибка доступа к объекту браузера";
    const wchar_t* noDocument = L"Ошибка доступа к объекту документа";
    const wchar_t* noTop = L"Возникла ошибка при определении объекта браузера верхнего уровня";
    const struct {
        Step step;
        HRESULT answer;  // S_FALSE: success without a result
        Failure failure;
    } rows[] = {
        {Step::serviceProvider, E_NOTIMPL, {"SetSite.IServiceProvider", noProvider, E_NOTIMPL}},
        {Step::browserService, E_ACCESSDENIED, {"SetSite.QueryService", noBrowser, E_ACCESSDENIED}},
        {Step::browserService, S_FALSE, {"SetSite.QueryService", noBrowser, S_OK}},
        {Step::topFrameService, E_NOINTERFACE, {"SetSite.getTopBrowser", noTop, S_OK}},
        {Step::topBrowserService, E_NOINTERFACE, {"SetSite.getTopBrowser", noTop, S_OK}},
        {Step::window, E_FAIL, {"SetSite.get_HWND", L"Ошибка доступа к хендлу главного окна IE", E_FAIL}},
        {Step::document, E_FAIL, {"SetSite.get_Document", noDocument, E_FAIL}},
        {Step::document, S_FALSE, {"SetSite.get_Document", noDocument, S_OK}},
        {Step::htmlDocument, E_NOINTERFACE, {"SetSite.get_Document", noDocument, E_NOINTERFACE}},
        {Step::url, E_FAIL, {"SetSite.get_URL", L"Ошибка доступа к URL текущего документа", E_FAIL}},
    };
    trust(L"steps.example");
    for (const auto& row : rows) {
        host_.answers = {{row.step, row.answer}};
        visit(L"https://steps.example/");
        EXPECT_EQ(failure(), row.failure);
        EXPECT_EQ(failure(true), row.failure) << "once more";
        EXPECT_EQ(object_.mainWindow(), nullptr);
    }
    host_.answers.clear();
    visit(L"https://steps.example/");
    EXPECT_TRUE(isAllowed()) << "a site that resolves ends the error";

    EXPECT_EQ(object_.setSite(nullptr), S_OK);
    EXPECT_EQ(host_.references, 0);
    EXPECT_EQ(failure(), Failure("SetSite", L"Ошибка доступа к реализации интерфейса IObjectWithSite", S_OK));
}

TEST_F(BrowserObject, GetSiteHandsTheSiteBack) {
    void* site = this;
    EXPECT_EQ(object_.getSite(__uuidof(IServiceProvider), &site), E_FAIL);
    EXPECT_EQ(site, nullptr);
    EXPECT_EQ(object_.getSite(__uuidof(IServiceProvider), nullptr), E_POINTER);
    visit(L"https://a.example/");
    ASSERT_EQ(object_.getSite(__uuidof(IServiceProvider), &site), S_OK);
    EXPECT_EQ(site, host_.site());
    static_cast<IUnknown*>(site)->Release();
    EXPECT_EQ(object_.getSite(__uuidof(IStorage), &site), E_NOINTERFACE);
    EXPECT_EQ(site, nullptr);
}

TEST_F(BrowserObject, EachKindOfHostHasItsAddress) {
    trust(L"page.example");
    host_.window = ::GetDesktopWindow();
    visit(L"https://page.example/path");
    EXPECT_TRUE(isAllowed());
    EXPECT_EQ(object_.mainWindow(), host_.window);

    // Without a frame around it, the page's browser counts if it says that it is the outermost.
    host_.isTopContainer = true;
    for (const Step missing : {Step::topFrameService, Step::topBrowserService}) {
        host_.answers = {{missing, E_NOINTERFACE}};
        visit(L"https://page.example/path");
        EXPECT_TRUE(isAllowed());
    }

    host_.href = L"https://page.example/path";
    host_.answers = {{Step::browserService, E_NOINTERFACE}};
    visit(L"");
    EXPECT_TRUE(isAllowed()) << "an HTML window";
    EXPECT_EQ(object_.mainWindow(), nullptr);

    for (const Step missing : {Step::htmlWindowService, Step::htmlWindow, Step::location, Step::href}) {
        host_.answers = {{Step::browserService, E_NOINTERFACE}, {missing, E_NOTIMPL}};
        visit(L"");
        EXPECT_FALSE(isAllowed());
    }
    trust(L"name://corvane_tests.exe");
    EXPECT_TRUE(isAllowed()) << "the name of the program";
}

TEST_F(BrowserObject, UserIsAskedWithTheHostsNameAndOnlyWhereAskingMakesSense) {
    host_.window =
        ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    const DialogDriver driver([&](HWND dialog) {
        EXPECT_EQ(textOf(dialog), L"Внимание");
        EXPECT_EQ(textOf(::GetDlgItem(dialog, -1)),
                  L"Сайт www.name.example просит доступ к плагину Zim Vetrel.\n\n"
                  L"Запретите доступ, если не доверяете этому сайту.");
        EXPECT_EQ(textOf(::GetDlgItem(dialog, IDOK)), L"Разрешить доступ");
        EXPECT_EQ(textOf(::GetDlgItem(dialog, IDCANCEL)), L"Запретить");
        EXPECT_EQ(textOf(::GetDlgItem(dialog, rememberId)), L"Запомнить выбор");
        EXPECT_TRUE(::GetWindowLongPtrW(dialog, GWL_EXSTYLE) & WS_EX_TOPMOST);
        EXPECT_EQ(::GetWindow(dialog, GW_OWNER), host_.window);
        EXPECT_FALSE(::IsWindowEnabled(host_.window));
        ::SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_DOUBLECLICKED), 0);  // is no answer
        ::SendDlgItemMessageW(dialog, rememberId, BM_CLICK, 0, 0);
        ::PostMessageW(dialog, WM_CLOSE, 0, 0);
    });
    EXPECT_FALSE(isAllowed(true)) << "before any site";
    visit(L"");
    EXPECT_FALSE(isAllowed(true)) << "a document without an address";
    visit(L"https://WWW.Name.example:8080/page?x");
    EXPECT_FALSE(isAllowed(false));
    EXPECT_EQ(driver.count(), 0);
    EXPECT_FALSE(isAllowed(true));
    EXPECT_FALSE(isAllowed(true)) << "closing remembers nothing, though the box is checked";
    EXPECT_EQ(driver.count(), 2);
    ::DestroyWindow(host_.window);
}

TEST_F(BrowserObject, AnswersAreRememberedAsTheDialogSays) {
    const struct {
        const wchar_t* host;
        int button;
        bool remember;
        const char* failure;
        bool isInRegistry;
    } rows[] = {
        {L"https://once.example", IDOK, false, "", false},
        {L"https://always.example", IDOK, true, "", true},
        {L"https://never.example", IDCANCEL, true, "E_ACCESS_DENIED", false},
        {L"https://asked.example", IDCANCEL, false, "E_ACCESS_DENIED", false},
        {L"file:///c:/page.html", IDOK, true, "E_INVALID_DOMAIN", false},  // can be no pattern
    };
    for (const auto& row : rows) {
        const DialogDriver driver([&](HWND dialog) {
            if (row.remember)
                ::SendDlgItemMessageW(dialog, rememberId, BM_CLICK, 0, 0);
            ::SendDlgItemMessageW(dialog, row.button, BM_CLICK, 0, 0);
        });
        visit(row.host + std::wstring(L":8080/page"));
        EXPECT_EQ(std::get<0>(failure(true)), row.failure);
        EXPECT_EQ(driver.count(), 1);
        EXPECT_EQ(isAllowed(false), std::string_view(row.failure).empty());
        EXPECT_EQ(RegTrustedSites().isTrusted(row.host), row.isInRegistry);
        EXPECT_EQ(SessionTrustedSites::instance().reject(row.host), row.host == rows[2].host);
    }
}

TEST(DialogWithCheckBox, DialogThatCannotBeShownIsAnError) {
    const auto [code, number] = Corvane::Test::failureOf([] {
        // A module without the dialog.
        Gui::DialogWithCheckBox(L"example.org").get(::GetModuleHandleW(L"ntdll.dll"), nullptr);
    });
    EXPECT_EQ(code, E_COMMON_DLG_OPTIONS.code);
    EXPECT_NE(number, 0u);
}

}  // namespace
