// Access control of the DLL as it is handed out: its own dialog, answered as a user would, and what it
// remembers of the answers.
#include "../unit/dialog_driver.h"
#include "../unit/fake_host.h"
#include "../unit/scratch_registry.h"
#include "component.h"

namespace robustness {
namespace {

using Corvane::DialogDriver;
using Corvane::FakeHost;
using Corvane::ScratchRegistry;
using Corvane::Step;

constexpr wchar_t trustedSites[] = L"SOFTWARE\\ZimVetrel\\VetrelCorvane\\TrustedSites";
constexpr int rememberBox = 1001;
constexpr HRESULT accessDenied = static_cast<HRESULT>(0x800405E9);

class AccessTest : public ::testing::Test {
protected:
    AccessTest() { host_.answers = {{Step::browserService, E_NOINTERFACE}}; }

    ~AccessTest() override { EXPECT_EQ(host_.references, 0) << "the host's objects are still held"; }

    // An object of the page at `url`, in a DLL that stays loaded as long as `component`.
    template <class Interface>
    ComPtr<Interface> objectOf(const Component& component, REFCLSID clsid, const wchar_t* url) {
        host_.href = url;
        auto object = component.create<Interface>(clsid);
        EXPECT_EQ(object.template query<IObjectWithSite>()->SetSite(host_.site()), S_OK);
        return object;
    }

    bool hasAccess(const Component& component, const wchar_t* url) {
        VARIANT_BOOL access = VARIANT_TRUE;
        EXPECT_EQ(objectOf<IAbout>(component, __uuidof(About), url)->get_HasAccess(&access), S_OK);
        return access != VARIANT_FALSE;
    }

    // What a method of a service answers the page.
    HRESULT call(const Component& component, const wchar_t* url) {
        ComPtr<IBinaryObject> made;
        const auto service = objectOf<IBinaryObjectService>(component, __uuidof(BinaryObjectService), url);
        const HRESULT hr = service->BinaryObjectFromHex(Bstr(L"01").get(), made.put());
        EXPECT_EQ(static_cast<bool>(made), hr == S_OK);
        return hr;
    }

    ScratchRegistry registry_;
    FakeHost host_;
};

TEST_F(AccessTest, PatternsOfTheRegistryDecide) {
    ScratchRegistry::addValue(HKEY_CURRENT_USER, trustedSites, L"*.example.org");
    ScratchRegistry::addValue(HKEY_LOCAL_MACHINE, trustedSites, L"https://почта.рф");
    const Component component;
    const struct {
        const wchar_t* url;
        bool allowed;
    } rows[] = {
        {L"https://example.org/", true},
        {L"HTTP://A.b.Example.org:8080/x", true},
        {L"https://badexample.org", false},
        {L"https://ПОЧТА.рф/ящик", true},
        {L"http://почта.рф/", false},
        {L"example.org", false},
        {L"https://example.org@evil.net", false},
        {L"", false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(hasAccess(component, row.url), row.allowed) << ::testing::PrintToString(row.url);
}

TEST_F(AccessTest, UserIsAskedByMethodsAndNeverByHasAccess) {
    const DialogDriver driver([](HWND dialog) { ::PostMessageW(dialog, WM_CLOSE, 0, 0); });
    const Component component;
    EXPECT_FALSE(hasAccess(component, L"https://asked.example/"));
    EXPECT_EQ(driver.count(), 0);
    EXPECT_EQ(call(component, L"https://asked.example/"), accessDenied);
    EXPECT_EQ(driver.count(), 1);
}

TEST_F(AccessTest, AnswersLastAsLongAsTheySay) {
    const struct {
        const wchar_t* url;
        int button;
        bool remember;
        HRESULT answer;
        int dialogsInProcess;  // of two calls while the DLL stays loaded
        bool lasts;            // beyond its unloading
    } rows[] = {
        {L"https://once.example/", IDOK, false, S_OK, 1, false},
        {L"https://always.example/", IDOK, true, S_OK, 1, true},
        {L"https://refused.example/", IDCANCEL, false, accessDenied, 2, false},
        {L"https://banned.example/", IDCANCEL, true, accessDenied, 1, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.url));
        const DialogDriver driver([&](HWND dialog) {
            if (row.remember)
                ::SendDlgItemMessageW(dialog, rememberBox, BM_CLICK, 0, 0);
            ::SendDlgItemMessageW(dialog, row.button, BM_CLICK, 0, 0);
        });
        {
            const Component component;
            EXPECT_EQ(call(component, row.url), row.answer);
            EXPECT_EQ(call(component, row.url), row.answer);
            EXPECT_EQ(driver.count(), row.dialogsInProcess);
            EXPECT_EQ(hasAccess(component, row.url), row.answer == S_OK);
        }
        const Component again;
        EXPECT_EQ(hasAccess(again, row.url), row.lasts);
        call(again, row.url);
        EXPECT_EQ(driver.count(), row.dialogsInProcess + (row.lasts ? 0 : 1));
    }
}

TEST_F(AccessTest, FailureOfTheSiteIsRaisedByTheCall) {
    host_.answers = {{Step::browserService, E_ACCESSDENIED}};
    const Component component;
    EXPECT_EQ(call(component, L""), E_ACCESSDENIED);
    ComPtr<IErrorInfo> info;
    ASSERT_EQ(::GetErrorInfo(0, info.put()), S_OK);
    Bstr description;
    info->GetDescription(description.put());
    EXPECT_EQ(description.view(), L"Ошибка доступа к объекту браузера");
    EXPECT_FALSE(hasAccess(component, L""));
}

}  // namespace
}  // namespace robustness
