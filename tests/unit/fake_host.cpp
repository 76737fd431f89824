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

template <class Result, class Value>
HRESULT give(Step step, Result* result, Value value) {
    const auto found = host->answers.find(step);
    const HRESULT hr = found == host->answers.end() ? S_OK : found->second;
    *result = hr == S_OK ? value() : Result{};
    return hr;
}

HRESULT giveText(Step step, BSTR* result, const std::wstring& text) {
    return give(step, result, [&] { return ::SysAllocString(text.c_str()); });
}

template <class Object>
HRESULT giveObject(Step step, void* result, Object* object) {
    return give(step, static_cast<Object**>(result), [&] {
        ++host->references;
        return object;
    });
}

// Each object is asked for one interface beside its own.
HRESULT giveInterface(REFIID iid, void** object);

// The object over a table in which `setMethods` sets those that are not IUnknown's.
template <class Interface, class SetMethods>
Interface* objectWith(SetMethods setMethods) {
    static std::remove_pointer_t<decltype(Interface::lpVtbl)> table;
    static Interface object{&table};
    table.QueryInterface = [](Interface*, REFIID iid, void** other)
                               STDMETHODCALLTYPE { return giveInterface(iid, other); };
    table.AddRef = [](Interface*) STDMETHODCALLTYPE { return static_cast<ULONG>(++host->references); };
    table.Release = [](Interface*) STDMETHODCALLTYPE { return static_cast<ULONG>(--host->references); };
    setMethods(table);
    return &object;
}

IHTMLLocation* location() {
    return objectWith<IHTMLLocation>([](auto& table) {
        table.get_href = [](IHTMLLocation*, BSTR* text)
                             STDMETHODCALLTYPE { return giveText(Step::href, text, host->href); };
    });
}

IHTMLWindow2* htmlWindow() {
    return objectWith<IHTMLWindow2>([](auto& table) {
        table.get_location = [](IHTMLWindow2*, IHTMLLocation** result)
                                 STDMETHODCALLTYPE { return giveObject(Step::location, result, location()); };
    });
}

IHTMLDocument2* document() {
    return objectWith<IHTMLDocument2>([](auto& table) {
        table.get_URL = [](IHTMLDocument2*, BSTR* text)
                            STDMETHODCALLTYPE { return giveText(Step::url, text, host->url); };
    });
}

void setPageMethods(IWebBrowser2Vtbl& table) {
    table.get_HWND = [](IWebBrowser2*, SHANDLE_PTR* result) STDMETHODCALLTYPE {
        return give(Step::window, result, [] { return reinterpret_cast<SHANDLE_PTR>(host->window); });
    };
    table.get_Document = [](IWebBrowser2*, IDispatch** result)
                             STDMETHODCALLTYPE { return giveObject(Step::document, result, document()); };
}

// The browser of the page itself. Only where it is the outermost may its window and document be asked for.
IWebBrowser2* pageBrowser() {
    return objectWith<IWebBrowser2>([](auto& table) {
        table.get_TopLevelContainer = [](IWebBrowser2*, VARIANT_BOOL* result) STDMETHODCALLTYPE {
            return give(Step::topLevelContainer, result,
                        [] { return host->isTopContainer ? VARIANT_TRUE : VARIANT_FALSE; });
        };
        table.get_HWND = nullptr;
        table.get_Document = nullptr;
        if (host->isTopContainer)
            setPageMethods(table);
    });
}

IServiceProvider* topFrame() {
    return objectWith<IServiceProvider>([](auto& table) {
        table.QueryService = [](IServiceProvider*, REFGUID service, REFIID, void** result) STDMETHODCALLTYPE {
            return service == SID_SWebBrowserApp
                       ? giveObject(Step::topBrowserService, result, objectWith<IWebBrowser2>(setPageMethods))
                       : E_UNEXPECTED;
        };
    });
}

HRESULT STDMETHODCALLTYPE giveService(IServiceProvider*, REFGUID service, REFIID iid, void** result) {
    constexpr GUID windowService{0xD48A6EC6, 0x6A4A, 0x11CF, {0x94, 0xA7, 0x44, 0x45, 0x53, 0x54, 0, 0}};
    if (service == SID_SWebBrowserApp && iid == IID_IWebBrowser2)
        return giveObject(Step::browserService, result, pageBrowser());
    if (service == SID_STopLevelBrowser && iid == IID_IServiceProvider)
        return giveObject(Step::topFrameService, result, topFrame());
    if (service == windowService && iid == IID_IUnknown)
        return giveObject(Step::htmlWindowService, result, htmlWindow());
    return E_UNEXPECTED;
}

IServiceProvider* siteProvider() {
    return objectWith<IServiceProvider>([](auto& table) { table.QueryService = giveService; });
}

HRESULT giveInterface(REFIID iid, void** object) {
    if (iid == IID_IServiceProvider)
        return giveObject(Step::serviceProvider, object, siteProvider());
    if (iid == IID_IHTMLWindow2)
        return giveObject(Step::htmlWindow, object, htmlWindow());
    if (iid == IID_IHTMLDocument2)
        return giveObject(Step::htmlDocument, object, document());
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
