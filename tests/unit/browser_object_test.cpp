#include "com/access/browser_object.h"

#include "com/access/question.h"
#include "core/system_exception.h"
#include "dialog_driver.h"
#include "fake_host.h"
#include "gui/dialog_with_check_box.h"
#include "platform/import_patch.h"
#include "scratch_registry.h"
#include "sites/trusted_sites.h"
#include "soon.h"
#include "support.h"

#include <atomic>
#include <tuple>
#include <utility>

using namespace Corvane;
using Com::BrowserSite;
using Corvane::Test::errorCode;
using Corvane::Test::failureOf;

namespace {

// What checkAccess threw: the name of the descriptor, its message, and the HRESULT of a COM call.
using Failure = std::tuple<std::string, std::wstring, HRESULT>;

constexpr int rememberId = 1001;

std::wstring textOf(HWND window) {
    std::wstring text(2000, L'\0');
    text.resize(static_cast<std::size_t>(::GetWindowTextW(window, text.data(), 2000)));
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
        for (const bool mayAsk : {false, true})
            EXPECT_EQ(failure(mayAsk), row.failure);
        EXPECT_EQ(object_.mainWindow(), nullptr);
    }
    host_.answers.clear();
    visit(L"https://steps.example/");
    EXPECT_TRUE(isAllowed()) << "a site that resolves ends the error";

    EXPECT_EQ(object_.setSite(nullptr), S_OK);
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
}

TEST_F(BrowserObject, EachKindOfHostHasItsAddress) {
    trust(L"page.example");
    host_.window = ::GetDesktopWindow();
    host_.isTopContainer = true;
    // Without a frame around it, the page's browser counts if it says that it is the outermost.
    for (const Step missing : {Step::href, Step::topFrameService, Step::topBrowserService}) {
        host_.answers = {{missing, E_NOINTERFACE}};
        visit(L"https://page.example/path");
        EXPECT_TRUE(isAllowed());
        EXPECT_EQ(object_.mainWindow(), host_.window);
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

TEST_F(BrowserObject, UserIsAskedWithTheHostsNameAndTheAnswerIsRemembered) {
    host_.window = makeOwner();
    const struct {
        const wchar_t* host;
        int answer;
        bool remember;
    } rows[] = {{L"once", IDOK, false},
                {L"always", IDOK, true},
                {L"never", IDCANCEL, true},
                {L"asked", IDCANCEL, false},
                {L"closed", 0, true}};  // closing remembers nothing, though the box is checked
    for (const auto& row : rows) {
        const std::wstring host = std::wstring(row.host) + L".name.example";
        const DialogDriver driver([&](HWND dialog) {
            EXPECT_EQ(textOf(dialog), L"Внимание");
            EXPECT_EQ(textOf(::GetDlgItem(dialog, -1)),
                      L"Сайт " + host +
                          L" просит доступ к плагину Zim Vetrel.\n\n"
                          L"Запретите доступ, если не доверяете этому сайту.");
            EXPECT_EQ(textOf(::GetDlgItem(dialog, IDOK)), L"Разрешить доступ");
            EXPECT_EQ(textOf(::GetDlgItem(dialog, IDCANCEL)), L"Запретить");
            EXPECT_EQ(textOf(::GetDlgItem(dialog, rememberId)), L"Запомнить выбор");
            EXPECT_TRUE(::GetWindowLongPtrW(dialog, GWL_EXSTYLE) & WS_EX_TOPMOST);
            EXPECT_EQ(::GetWindow(dialog, GW_OWNER), host_.window);
            EXPECT_FALSE(::IsWindowEnabled(host_.window));
            ::SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_DOUBLECLICKED), 0);  // is no answer
            if (row.remember)
                ::SendDlgItemMessageW(dialog, rememberId, BM_CLICK, 0, 0);
            if (row.answer == 0)
                ::PostMessageW(dialog, WM_CLOSE, 0, 0);
            else
                ::SendDlgItemMessageW(dialog, row.answer, BM_CLICK, 0, 0);
        });
        const std::wstring site = L"HTTPS://" + host;
        visit(site + L":8080/page?x");
        EXPECT_FALSE(isAllowed(false));
        EXPECT_EQ(driver.count(), 0);
        EXPECT_EQ(isAllowed(true), row.answer == IDOK);
        EXPECT_EQ(isAllowed(false), row.answer == IDOK);
        EXPECT_EQ(driver.count(), 1);
        EXPECT_EQ(RegTrustedSites().isTrusted(site), row.answer == IDOK && row.remember);
        EXPECT_EQ(SessionTrustedSites::instance().reject(site), row.answer == IDCANCEL && row.remember);
        for (const std::wstring& other : {L"http://" + host, L"https://www." + host})
            EXPECT_FALSE(SessionTrustedSites::instance().isTrusted(other) ||
                         SessionTrustedSites::instance().reject(other));
    }
    ::DestroyWindow(host_.window);
}

TEST_F(BrowserObject, AddressThatDoesNotTellItsSiteIsRefusedWithoutAQuestion) {
    const DialogDriver driver([](HWND dialog) { ::SendDlgItemMessageW(dialog, IDOK, BM_CLICK, 0, 0); });
    EXPECT_FALSE(isAllowed(true)) << "before any site";
    visit(L"");
    EXPECT_FALSE(isAllowed(true)) << "a document without an address";
    for (const wchar_t* url : {L"file:///c:/page.html", L"https://bank.example:x@evil.example/"}) {
        visit(url);
        EXPECT_EQ(std::get<0>(failure(true)), "E_INVALID_DOMAIN") << testing::PrintToString(url);
        EXPECT_FALSE(isAllowed(false)) << testing::PrintToString(url);
    }
    EXPECT_EQ(driver.count(), 0);
}

TEST_F(BrowserObject, WhileTheHostIsAskedTheObjectHasNoPage) {
    trust(L"former.example");
    visit(L"https://former.example/");
    EXPECT_TRUE(isAllowed());
    int calls = 0;
    host_.during = [&](Step) { calls += isAllowed(true) ? 100 : 1; };
    visit(L"https://other.example/");
    EXPECT_EQ(calls, 8) << "steps, all without access";
}

// What a timer or another page does on the test's thread meanwhile, once.
std::function<void()> intrusion;

void CALLBACK intrude(HWND, UINT, UINT_PTR timer, DWORD) {
    ::KillTimer(nullptr, timer);
    std::exchange(intrusion, nullptr)();
}

TEST_F(BrowserObject, WhileAQuestionIsOpenNoOtherIsAsked) {
    BrowserSite other;
    BrowserSite trusted;
    trust(L"trusted.example");
    visit(L"https://trusted.example/");
    ASSERT_EQ(trusted.setSite(host_.site()), S_OK);
    host_.url = L"https://other.example/";
    ASSERT_EQ(other.setSite(host_.site()), S_OK);
    const auto mayAct = [](const BrowserSite& site) {
        return errorCode([&] { site.checkAccess(true); }) != E_ACCESS_DENIED.code;
    };
    std::atomic<bool> hasIntruded;
    const DialogDriver driver([&](HWND dialog) {
        EXPECT_TRUE(Corvane::Test::soon([&] { return hasIntruded.load(); }));
        ::PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
    });
    for (const wchar_t* site : {L"https://asked.example/", L"https://moved.example/"}) {
        visit(site);
        hasIntruded = false;
        intrusion = [&] {
            EXPECT_FALSE(isAllowed(true)) << "the page itself";
            EXPECT_FALSE(mayAct(other));
            EXPECT_TRUE(mayAct(trusted));
            EXPECT_NE(other.access(), nullptr);
            visit(L"https://elsewhere.example/");
            hasIntruded = true;
        };
        ::SetTimer(nullptr, 0, 1, &intrude);
        EXPECT_TRUE(isAllowed(true));
        EXPECT_FALSE(isAllowed(false)) << "the answer was for the page that asked";
        EXPECT_TRUE(SessionTrustedSites::instance().isTrusted(site));
    }
    EXPECT_EQ(driver.count(), 2);
    for (BrowserSite* site : {&other, &trusted})
        site->setSite(nullptr);
}

TEST_F(BrowserObject, WhatWasAnsweredMeanwhileIsNotAskedAgain) {
    const DialogDriver driver([](HWND dialog) { ::PostMessageW(dialog, WM_CLOSE, 0, 0); });
    for (const bool isBanned : {false, true}) {
        const std::wstring url =
            isBanned ? L"https://banned.meanwhile.example/" : L"https://trusted.meanwhile.example/";
        SessionTrustedSites::instance().add(url, isBanned);
        EXPECT_EQ(Com::askUser({url}), !isBanned);
    }
    EXPECT_EQ(driver.count(), 0);
}

// What the dialog shows of a site, and whether all of it has room. (Without fonts, as 32-bit programs are
// under a Wine without 32-bit libraries, text has no size.)
std::pair<std::wstring, bool> shownOf(const std::wstring& host) {
    std::pair<std::wstring, bool> shown;
    const DialogDriver driver([&](HWND dialog) {
        const HWND control = ::GetDlgItem(dialog, -1);
        const HDC screen = ::GetDC(control);
        ::SelectObject(screen, reinterpret_cast<HGDIOBJ>(::SendMessageW(control, WM_GETFONT, 0, 0)));
        RECT area{};
        ::GetClientRect(control, &area);
        RECT needed = area;
        const std::wstring text = textOf(control);
        ::DrawTextW(screen, text.c_str(), -1, &needed, DT_CALCRECT | DT_NOPREFIX | DT_WORDBREAK);
        shown = {text, needed.right <= area.right && needed.bottom <= area.bottom};
        ::ReleaseDC(control, screen);
        ::PostMessageW(dialog, WM_CLOSE, 0, 0);
    });
    Gui::DialogWithCheckBox(host).get(::GetModuleHandleW(nullptr), nullptr);
    return shown;
}

TEST(DialogWithCheckBox, TheEndOfAHostIsAlwaysReadable) {
    std::wstring labels = L"https.online.bank.example";
    for (int i = 0; i < 40; ++i)
        labels += L".label" + std::to_wstring(i);
    const std::size_t before = std::wstring_view(L"Сайт ").size();
    const std::wstring after = L" просит доступ";
    const struct {
        std::wstring host;
        std::wstring end;  // what must be read of it
    } rows[] = {
        {L"online.bank.example.of-some-length.example", L"online.bank.example.of-some-length.example"},
        {labels + L".evil.example", L".evil.example"},
        {std::wstring(63, L'w') + L".example", L"wwwwwwwwwwwwwwwwwwwwwwwwwwwwww.example"},
        {std::wstring(5000, L'a'), std::wstring(30, L'a')},
        {std::wstring(100'000, L'.') + L"evil.example", L"evil.example"},
        {labels + L".пример.испытание", L".пример.испытание"},
        {L"bank.\x05D0\x05D1.\x05D2\x05D3.example", L"bank.\x05D0\x05D1.\x05D2\x05D3.example"},
        {L"", L""},
    };
    for (const auto& row : rows) {
        const auto [text, fits] = shownOf(row.host);
        EXPECT_TRUE(fits) << text.size();
        std::wstring host = text.substr(before, text.find(after) - before);
        std::erase_if(host, [](wchar_t c) { return c == L'\n' || c == L'\x200E'; });
        EXPECT_EQ(host == row.host, row.end == row.host) << text.size();
        EXPECT_TRUE(host == row.host || (host.starts_with(L'\x2026') && host.ends_with(row.end)));
        EXPECT_TRUE(text.find(L"\n.") == std::wstring::npos || row.host.starts_with(L'.'))
            << "a point ends its line";
        // Letters that run from right to left leave the labels in their order.
        EXPECT_TRUE(host.find(L'\x05D0') == std::wstring::npos ||
                    text.find(L"\x05D1\x200E.\x200E\x05D2") != std::wstring::npos);
    }
}

TEST(DialogWithCheckBox, DialogThatCannotBeShownIsAnError) {
    const HINSTANCE without = ::GetModuleHandleW(L"ntdll.dll");
    EXPECT_EQ(errorCode([&] { Gui::DialogWithCheckBox(L"example.org").get(without, nullptr); }),
              E_COMMON_DLG_OPTIONS.code);
}

// In Internet Explorer's protected mode the window of the browser owns no window of a page's process.
TEST(DialogWithCheckBox, IsShownWhereTheOwnerIsOutOfReachAndNotWhereNobodyLooks) {
    const Corvane::Test::Replaced refused(&::DialogBoxParamW,
                                          [](HINSTANCE, LPCWSTR, HWND owner, DLGPROC, LPARAM) {
                                              ::SetLastError(ERROR_ACCESS_DENIED);
                                              return static_cast<INT_PTR>(owner ? -1 : 3);
                                          });
    const auto ask = [](HWND owner) { return Gui::DialogWithCheckBox(L"example.org").get(nullptr, owner); };
    const HWND browser = makeOwner();
    EXPECT_EQ(ask(browser), Gui::DialogWithCheckBox::Choice::allowAndRemember);
    ::DestroyWindow(browser);
    EXPECT_EQ(errorCode([&] { ask(browser); }), E_COMMON_DLG_OPTIONS.code) << "the browser is gone";
    // The window station of a service has the flag of the visible one not set.
    const Corvane::Test::Replaced unseen(&::GetUserObjectInformationW,
                                         [](HANDLE, int, void*, DWORD, DWORD*) { return TRUE; });
    EXPECT_EQ(failureOf([&] { ask(nullptr); }),
              Corvane::Test::Failure(E_COMMON_DLG_OPTIONS.code, ERROR_REQUIRES_INTERACTIVE_WINDOWSTATION));
}

}  // namespace
