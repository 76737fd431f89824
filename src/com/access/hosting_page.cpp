#include "com/access/hosting_page.h"

#include "com/runtime/automation.h"
#include "com/runtime/ptr.h"
#include "core/check.h"

#include <exdisp.h>
#include <mshtml.h>
#include <servprov.h>

#include <array>
#include <utility>

namespace Corvane::Com {
namespace {

// clang-format off
constexpr ErrorDescriptor noSite{0, "SetSite", L"Ошибка доступа к реализации интерфейса IObjectWithSite"};
constexpr ErrorDescriptor noServiceProvider{0, "SetSite.IServiceProvider", L"Ошибка доступа к реализации интерфейса IServiceProvider"};
constexpr ErrorDescriptor noBrowser{0, "SetSite.QueryService", L"Ошибка доступа к объекту браузера"};
constexpr ErrorDescriptor noTopBrowser{0, "SetSite.getTopBrowser", L"Возникла ошибка при определении объекта браузера верхнего уровня"};
constexpr ErrorDescriptor noWindow{0, "SetSite.get_HWND", L"Ошибка доступа к хендлу главного окна IE"};
constexpr ErrorDescriptor noDocument{0, "SetSite.get_Document", L"Ошибка доступа к объекту документа"};
constexpr ErrorDescriptor noUrl{0, "SetSite.get_URL", L"Ошибка доступа к URL текущего документа"};
// clang-format on

// SID_SWebBrowserApp is the identifier of IWebBrowserApp.
const GUID& browserService = __uuidof(IWebBrowserApp);
// SID_STopLevelBrowser: the frame that holds all documents of a browser's window.
constexpr GUID topLevelBrowserService{
    0x4C96BE40, 0x915C, 0x11CF, {0x99, 0xD3, 0x00, 0xAA, 0x00, 0x4A, 0xE8, 0x37}};
// What the script engines' hosts offer the page's window under.
constexpr GUID windowService{0xD48A6EC6, 0x6A4A, 0x11CF, {0x94, 0xA7, 0x44, 0x45, 0x53, 0x54, 0x00, 0x00}};

// A call that is to hand over an object: it may fail, and it may succeed without one.
template <class Interface>
void checkObject(HRESULT hr, const ComPtr<Interface>& object, const ErrorDescriptor& descriptor,
                 const wchar_t* call) {
    checkHresult(hr, descriptor, call);
    if (!object)
        throw Exception(descriptor);
}

template <class Interface>
HRESULT queryService(IServiceProvider& provider, const GUID& service, ComPtr<Interface>& object) {
    return provider.QueryService(service, __uuidof(Interface), object.putVoid());
}

// The address of the HTML window of a host that is no browser.
std::optional<std::wstring> windowUrl(IServiceProvider& provider) {
    ComPtr<IUnknown> script;
    if (FAILED(queryService(provider, windowService, script)))
        return std::nullopt;
    const auto window = script.query<IHTMLWindow2>();
    ComPtr<IHTMLLocation> location;
    if (!window || FAILED(window->get_location(location.put())) || !location)
        return std::nullopt;
    Bstr href;
    if (FAILED(location->get_href(href.put())))
        return std::nullopt;
    return std::wstring(href.view());
}

// "name://" and the file name of the process. A path that does not fit the buffer comes back cut, with
// another file name at its end, and counts as unreadable.
std::optional<std::wstring> processUrl() {
    std::array<wchar_t, MAX_PATH> buffer{};
    const DWORD length = ::GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (length == 0 || length == buffer.size())
        return std::nullopt;
    const std::wstring_view path(buffer.data(), length);
    return L"name://" + std::wstring(path.substr(path.rfind(L'\\') + 1));
}

std::optional<HostingPage> findPlainHost(IServiceProvider& provider) {
    std::optional<std::wstring> url = windowUrl(provider);
    if (!url)
        url = processUrl();
    return url ? std::optional(HostingPage{std::move(*url), nullptr}) : std::nullopt;
}

// The site is asked for the frame around all documents, and the frame for its browser. A host without such
// a frame has a single browser, which says of itself that nothing stands around it.
ComPtr<IWebBrowser2> topBrowser(IServiceProvider& provider, const ComPtr<IWebBrowser2>& browser) {
    ComPtr<IServiceProvider> frame;
    ComPtr<IWebBrowser2> top;
    if (SUCCEEDED(queryService(provider, topLevelBrowserService, frame)) && frame &&
        SUCCEEDED(queryService(*frame, browserService, top)) && top)
        return top;
    VARIANT_BOOL isTop = VARIANT_FALSE;
    if (SUCCEEDED(browser->get_TopLevelContainer(&isTop)) && isTop != VARIANT_FALSE)
        return browser;
    throw Exception(noTopBrowser);
}

HostingPage pageOf(IWebBrowser2& browser) {
    SHANDLE_PTR window = 0;
    checkHresult(browser.get_HWND(&window), noWindow, L"IWebBrowser2::get_HWND");

    ComPtr<IDispatch> dispatch;
    checkObject(browser.get_Document(dispatch.put()), dispatch, noDocument, L"IWebBrowser2::get_Document");
    ComPtr<IHTMLDocument2> document;
    checkObject(dispatch->QueryInterface(__uuidof(IHTMLDocument2), document.putVoid()), document, noDocument,
                L"IUnknown::QueryInterface");

    Bstr url;
    checkHresult(document->get_URL(url.put()), noUrl, L"IHTMLDocument2::get_URL");
    return {std::wstring(url.view()), reinterpret_cast<HWND>(window)};
}

}  // namespace

std::optional<HostingPage> findHostingPage(IUnknown* site) {
    if (!site)
        throw Exception(noSite);
    ComPtr<IServiceProvider> provider;
    checkObject(site->QueryInterface(__uuidof(IServiceProvider), provider.putVoid()), provider,
                noServiceProvider, L"IUnknown::QueryInterface");

    ComPtr<IWebBrowser2> browser;
    const HRESULT hr = queryService(*provider, browserService, browser);
    if (hr == E_NOINTERFACE)
        return findPlainHost(*provider);
    checkObject(hr, browser, noBrowser, L"IServiceProvider::QueryService");
    return pageOf(*topBrowser(*provider, browser));
}

}  // namespace Corvane::Com
