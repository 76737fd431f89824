// The interfaces of a browser have some three hundred methods, of which six are called: tables of function
// pointers, as the C form of the headers declares them, spare the others. A method that is not set is null.
#define CINTERFACE
#include "fake_host.h"

#include <exdisp.h>
#include <mshtml.h>
#include <servprov.h>
#include <shlguid.h>

namespace Corvane {
namespace {

FakeHost* host = nullptr;

HRESULT answer(Step step) {
    const auto found = host->answers.find(step);
    return found == host->answers.end() ? S_OK : found->second;
}

template <class Result, class Value>
HRESULT give(Step step, Result* result, Value value) {
    const HRESULT hr = answer(step);
    *result = hr == S_OK ? value() : Result{};
    return hr;
}

HRESULT giveObject(Step step, void** result, void* object) {
    return give(step, result, [&] {
        ++host->references;
        return object;
    });
}

HRESULT giveText(Step step, BSTR* result, const std::wstring& text) {
    return give(step, result, [&] { return ::SysAllocString(text.c_str()); });
}

template <class Interface>
ULONG STDMETHODCALLTYPE addRef(Interface*) {
    return static_cast<ULONG>(++host->references);
}

template <class Interface>
ULONG STDMETHODCALLTYPE release(Interface*) {
    return static_cast<ULONG>(--host->references);
}

// Each object is asked for one interface beside its own.
HRESULT giveInterface(REFIID iid, void** object);

template <class Interface>
HRESULT STDMETHODCALLTYPE query(Interface*, REFIID iid, void** object) {
    return giveInterface(iid, object);
}

// An object over a table in which its own methods are set.
template <class Interface, class Table>
Interface objectOver(Table& table) {
    table.QueryInterface = query<Interface>;
    table.AddRef = addRef<Interface>;
    table.Release = release<Interface>;
    return Interface{&table};
}

HRESULT STDMETHODCALLTYPE getHref(IHTMLLocation*, BSTR* text) {
    return giveText(Step::href, text, host->href);
}

IHTMLLocation* location() {
    static IHTMLLocationVtbl table;
    table.get_href = getHref;
    static auto object = objectOver<IHTMLLocation>(table);
    return &object;
}

HRESULT STDMETHODCALLTYPE getLocation(IHTMLWindow2*, IHTMLLocation** result) {
    return giveObject(Step::location, reinterpret_cast<void**>(result), location());
}

IHTMLWindow2* htmlWindow() {
    static IHTMLWindow2Vtbl table;
    table.get_location = getLocation;
    static auto object = objectOver<IHTMLWindow2>(table);
    return &object;
}

HRESULT STDMETHODCALLTYPE getUrl(IHTMLDocument2*, BSTR* text) {
    return giveText(Step::url, text, host->url);
}

IHTMLDocument2* document() {
    static IHTMLDocument2Vtbl table;
    table.get_URL = getUrl;
    static auto object = objectOver<IHTMLDocument2>(table);
    return &object;
}

HRESULT STDMETHODCALLTYPE getWindow(IWebBrowser2*, SHANDLE_PTR* result) {
    return give(Step::window, result, [] { return reinterpret_cast<SHANDLE_PTR>(host->window); });
}

HRESULT STDMETHODCALLTYPE getDocument(IWebBrowser2*, IDispatch** result) {
    return giveObject(Step::document, reinterpret_cast<void**>(result), document());
}

HRESULT STDMETHODCALLTYPE getTopLevelContainer(IWebBrowser2*, VARIANT_BOOL* result) {
    return give(Step::topLevelContainer, result,
                [] { return host->isTopContainer ? VARIANT_TRUE : VARIANT_FALSE; });
}

IWebBrowser2* topBrowser() {
    static IWebBrowser2Vtbl table;
    table.get_HWND = getWindow;
    table.get_Document = getDocument;
    static auto object = objectOver<IWebBrowser2>(table);
    return &object;
}

// The browser of the page itself. Only where it is the outermost may its window and document be asked for.
IWebBrowser2* pageBrowser() {
    static IWebBrowser2Vtbl table;
    table.get_TopLevelContainer = getTopLevelContainer;
    table.get_HWND = host->isTopContainer ? getWindow : nullptr;
    table.get_Document = host->isTopContainer ? getDocument : nullptr;
    static auto object = objectOver<IWebBrowser2>(table);
    return &object;
}

HRESULT STDMETHODCALLTYPE topFrameService(IServiceProvider*, REFGUID service, REFIID, void** result) {
    return service == SID_SWebBrowserApp ? giveObject(Step::topBrowserService, result, topBrowser())
                                         : E_UNEXPECTED;
}

IServiceProvider* topFrame() {
    static IServiceProviderVtbl table;
    table.QueryService = topFrameService;
    static auto object = objectOver<IServiceProvider>(table);
    return &object;
}

HRESULT STDMETHODCALLTYPE siteService(IServiceProvider*, REFGUID service, REFIID iid, void** result) {
    constexpr GUID windowService{0xD48A6EC6, 0x6A4A, 0x11CF, {0x94, 0xA7, 0x44, 0x45, 0x53, 0x54, 0, 0}};
    if (service == SID_SWebBrowserApp && iid == IID_IWebBrowser2) {
        return giveObject(Step::browserService, result, pageBrowser());
    }
    if (service == SID_STopLevelBrowser && iid == IID_IServiceProvider) {
        return giveObject(Step::topFrameService, result, topFrame());
    }
    if (service == windowService && iid == IID_IUnknown) {
        return giveObject(Step::htmlWindowService, result, htmlWindow());
    }
    return E_UNEXPECTED;
}

IServiceProvider* siteProvider() {
    static IServiceProviderVtbl table;
    table.QueryService = siteService;
    static auto object = objectOver<IServiceProvider>(table);
    return &object;
}

HRESULT giveInterface(REFIID iid, void** object) {
    if (iid == IID_IServiceProvider) {
        return giveObject(Step::serviceProvider, object, siteProvider());
    }
    if (iid == IID_IHTMLWindow2) {
        return giveObject(Step::htmlWindow, object, htmlWindow());
    }
    if (iid == IID_IHTMLDocument2) {
        return giveObject(Step::htmlDocument, object, document());
    }
    *object = nullptr;
    return E_NOINTERFACE;
}

}  // namespace

FakeHost::FakeHost() {
    host = this;
}

FakeHost::~FakeHost() {
    host = nullptr;
}

IUnknown* FakeHost::site() {
    return reinterpret_cast<IUnknown*>(siteProvider());
}

}  // namespace Corvane
