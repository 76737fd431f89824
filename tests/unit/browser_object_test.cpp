#include "com/browser_object.h"

#include "core/system_exception.h"
#include "core/trusted_sites.h"
#include "dialog_driver.h"
#include "fake_host.h"
#include "scratch_registry.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>

using namespace Corvane;
using Com::BrowserSite;

namespace {

constexpr std::uint32_t accessDenied = 1001;

struct Failure {
    std::uint32_t code = 0;
    std::string name;
    std::wstring message;
    std::optional<HRESULT> hr;  // a ComException's
};

// What checkAccess throws; nothing when it allows.
std::optional<Failure> failureOf(const BrowserSite& object, bool mayAsk) {
    try {
        object.checkAccess(mayAsk);
    } catch (const ComException& exception) {
        return Failure{exception.code(), exception.what(), exception.message(), exception.hr()};
    } catch (const Exception& exception) {
        return Failure{exception.code(), exception.what(), exception.message(), std::nullopt};
    }
    return std::nullopt;
}

bool isAllowed(const BrowserSite& object, bool mayAsk = false) {
    const std::optional<Failure> failure = failureOf(object, mayAsk);
    if (failure) {
        EXPECT_EQ(failure->code, accessDenied) << failure->name;
    }
    return !failure;
}

std::wstring programUrl() {
    std::array<wchar_t, 1024> path{};
    auto size = static_cast<DWORD>(path.size());
    EXPECT_TRUE(::QueryFullProcessImageNameW(::GetCurrentProcess(), 0, path.data(), &size));
    const std::wstring text(path.data(), size);
    return L"name://" + text.substr(text.find_last_of(L'\\') + 1);
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

    // Answers each dialog by a click on a button, the box checked before if `remember`.
    static auto clicking(int button, bool remember) {
        return [=](HWND dialog) {
            if (remember) {
                ::SendDlgItemMessageW(dialog, 1001, BM_CLICK, 0, 0);
            }
            ::SendDlgItemMessageW(dialog, button, BM_CLICK, 0, 0);
        };
    }

    ScratchRegistry registry_;
    FakeHost host_;
    BrowserSite object_;
};

}  // namespace

TEST_F(BrowserObject, EveryFailingStepIsKeptAndRaised) {
    const struct {
        Step step;
        HRESULT answer;  // S_FALSE: success without a result
        const char* name;
        const wchar_t* message;
    } rows[] = {
        {Step::serviceProvider, E_NOINTERFACE, "SetSite.IServiceProvider",
         L"Ошибка доступа к реализации интерфейса IServiceProvider"},
        {Step::browserService, E_ACCESSDENIED, "SetSite.QueryService", L"Ошибка доступа к объекту браузера"},
        {Step::browserService, S_FALSE, "SetSite.QueryService", L"Ошибка доступа к объекту браузера"},
        {Step::window, E_FAIL, "SetSite.get_HWND", L"Ошибка доступа к хендлу главного окна IE"},
        {Step::document, E_FAIL, "SetSite.get_Document", L"Ошибка доступа к объекту документа"},
        {Step::document, S_FALSE, "SetSite.get_Document", L"Ошибка доступа к объекту документа"},
        {Step::htmlDocument, E_NOINTERFACE, "SetSite.get_Document", L"Ошибка доступа к объекту документа"},
        {Step::url, E_UNEXPECTED, "SetSite.get_URL", L"Ошибка доступа к URL текущего документа"},
    };
    trust(L"steps.example");
    for (const auto& row : rows) {
        host_.answers = {{row.step, row.answer}};
        visit(L"https://steps.example/");
        for (int call = 0; call < 2; ++call) {
            const std::optional<Failure> failure = failureOf(object_, true);
            ASSERT_TRUE(failure) << row.name;
            EXPECT_EQ(failure->code, 0u);
            EXPECT_EQ(failure->name, row.name);
            EXPECT_EQ(failure->message, row.message);
            EXPECT_EQ(failure->hr, row.answer == S_FALSE ? std::nullopt : std::optional(row.answer));
        }
        EXPECT_EQ(object_.mainWindow(), nullptr);
    }
    host_.answers.clear();
    visit(L"https://steps.example/");
    EXPECT_TRUE(isAllowed(object_)) << "a site that resolves ends the error";
}

TEST_F(BrowserObject, NullSiteLetsGoAndLeavesNoAccess) {
    trust(L"null.example");
    visit(L"https://null.example/");
    ASSERT_TRUE(isAllowed(object_));
    EXPECT_EQ(object_.setSite(nullptr), S_OK);
    EXPECT_EQ(host_.references, 0);
    const std::optional<Failure> failure = failureOf(object_, true);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->name, "SetSite");
    EXPECT_EQ(failure->message, std::wstring(L"Ошибка доступа к реализации интерфейса IObjectWithSite"));
    EXPECT_FALSE(failure->hr);
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

TEST_F(BrowserObject, TopLevelBrowserGivesAddressAndWindow) {
    trust(L"top.example");
    host_.window = ::GetDesktopWindow();
    visit(L"https://top.example/page");
    EXPECT_TRUE(isAllowed(object_));
    EXPECT_EQ(object_.mainWindow(), ::GetDesktopWindow());

    // Without a frame around it, the page's browser counts only if it says that it is the outermost.
    for (const Step missing : {Step::topFrameService, Step::topBrowserService}) {
        host_.answers = {{missing, E_NOINTERFACE}};
        host_.isTopContainer = true;
        visit(L"https://top.example/page");
        EXPECT_TRUE(isAllowed(object_));

        host_.isTopContainer = false;
        visit(L"https://top.example/page");
        const std::optional<Failure> failure = failureOf(object_, false);
        ASSERT_TRUE(failure);
        EXPECT_EQ(failure->name, "SetSite.getTopBrowser");
        EXPECT_EQ(failure->message,
                  std::wstring(L"Возникла ошибка при определении объекта браузера верхнего уровня"));
        EXPECT_FALSE(failure->hr);
    }
}

TEST_F(BrowserObject, HostWithHtmlWindowHasItsAddress) {
    trust(L"window.example");
    host_.answers = {{Step::browserService, E_NOINTERFACE}};
    host_.href = L"https://window.example/page";
    host_.window = ::GetDesktopWindow();
    ASSERT_EQ(object_.setSite(host_.site()), S_OK);
    EXPECT_TRUE(isAllowed(object_));
    EXPECT_EQ(object_.mainWindow(), nullptr);
}

TEST_F(BrowserObject, OtherHostHasTheNameOfItsProgram) {
    host_.href = L"https://window.example/page";
    for (const Step missing : {Step::htmlWindowService, Step::htmlWindow, Step::location, Step::href}) {
        host_.answers = {{Step::browserService, E_NOINTERFACE}, {missing, E_NOTIMPL}};
        ASSERT_EQ(object_.setSite(host_.site()), S_OK);
        EXPECT_FALSE(isAllowed(object_));
    }
    trust(programUrl());
    EXPECT_TRUE(isAllowed(object_));
}

TEST_F(BrowserObject, NoAddressMeansNoAccess) {
    const DialogDriver driver(clicking(IDOK, false));
    EXPECT_FALSE(isAllowed(object_, true)) << "before any site";
    visit(L"");
    EXPECT_FALSE(isAllowed(object_, true)) << "a document without an address";
    EXPECT_EQ(driver.count(), 0);
}

TEST_F(BrowserObject, UserIsAskedOnlyWhereAskingIsAllowed) {
    const DialogDriver driver(clicking(IDCANCEL, false));
    visit(L"https://asking.example/");
    EXPECT_FALSE(isAllowed(object_, false));
    EXPECT_EQ(driver.count(), 0);
    EXPECT_FALSE(isAllowed(object_, true));
    EXPECT_EQ(driver.count(), 1);
    EXPECT_FALSE(isAllowed(object_, true)) << "a refusal that is not remembered leaves no trace";
    EXPECT_EQ(driver.count(), 2);
}

TEST_F(BrowserObject, AnswersAreRememberedAsTheDialogSays) {
    const struct {
        const wchar_t* host;
        int button;
        bool remember;
        bool allows;
        bool isInRegistry;
    } rows[] = {
        {L"once.example", IDOK, false, true, false},
        {L"always.example", IDOK, true, true, true},
        {L"never.example", IDCANCEL, true, false, false},
    };
    for (const auto& row : rows) {
        const std::wstring address = std::wstring(L"https://") + row.host;
        visit(address + L":8080/page");
        {
            const DialogDriver driver(clicking(row.button, row.remember));
            EXPECT_EQ(isAllowed(object_, true), row.allows);
            EXPECT_EQ(driver.count(), 1);
            EXPECT_EQ(isAllowed(object_, true), row.allows);
            EXPECT_EQ(driver.count(), 1) << "asked again";
        }
        EXPECT_EQ(RegTrustedSites().isTrusted(address), row.isInRegistry);

        visit(std::wstring(L"http://") + row.host);
        const DialogDriver driver(clicking(IDCANCEL, false));
        EXPECT_FALSE(isAllowed(object_, true));
        EXPECT_EQ(driver.count(), 1) << "another scheme is another site";
    }
}

TEST_F(BrowserObject, DialogNamesTheHostAndIsOwnedByTheBrowser) {
    host_.window =
        ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    std::array<wchar_t, 200> text{};
    HWND owner = nullptr;
    const DialogDriver driver([&](HWND dialog) {
        ::GetDlgItemTextW(dialog, -1, text.data(), static_cast<int>(text.size()));
        owner = ::GetWindow(dialog, GW_OWNER);
        ::PostMessageW(dialog, WM_CLOSE, 0, 0);
    });
    visit(L"https://WWW.Name.example:8080/page?x");
    EXPECT_FALSE(isAllowed(object_, true));
    EXPECT_EQ(std::wstring(text.data()).rfind(L"Сайт www.name.example просит", 0), 0u);
    EXPECT_EQ(owner, host_.window);
    ::DestroyWindow(host_.window);
}

TEST_F(BrowserObject, SiteThatCannotBeAPatternIsNeverAllowed) {
    const DialogDriver driver(clicking(IDOK, true));
    visit(L"file:///c:/page.html");
    const std::optional<Failure> failure = failureOf(object_, true);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, E_INVALID_DOMAIN.code);
    EXPECT_FALSE(isAllowed(object_, false));
}
