// The interfaces of a browser have some three hundred methods, of which seven are called. Their objects are
// laid out as the C form of the headers declares them: a method that is not set is null.
#define CINTERFACE
#include "fake_host.h"

#include <exdisp.h>
#include <mshtml.h>
#include <servprov.h>
#include <shlguid.h>

#include <cstddef>

namespace Corvane {
namespace {

FakeHost* host = nullptr;

HRESULT STDMETHODCALLTYPE query(void*, REFIID iid, void** object);

// An object of any of these interfaces: the table of its methods, which begins with IUnknown's.
class Object {
public:
    Object() {
        set(offsetof(IUnknownVtbl, QueryInterface), &query);
        set(offsetof(IUnknownVtbl, AddRef), &addRef);
        set(offsetof(IUnknownVtbl, Release), &release);
    }

    template <class Method>
    void set(std::size_t offset, Method* method) {
        methods_[offset / sizeof(void*)] = reinterpret_cast<void*>(method);
    }

private:
    static ULONG STDMETHODCALLTYPE addRef(void*) { return static_cast<ULONG>(++host->references); }
    static ULONG STDMETHODCALLTYPE release(void*) { return static_cast<ULONG>(--host->references); }

    [[maybe_unused]] void** table_ = methods_;  // where callers look
    void* methods_[200] = {};
};

Object provider, frame, topBrowser, innerBrowser, document, htmlWindow, location;

template <class T>
HRESULT give(Step step, void* result, T value) {
    host->during(step);
    const auto found = host->answers.find(step);
    const HRESULT hr = found == host->answers.end() ? S_OK : found->second;
    if (hr == S_OK)
        *static_cast<T*>(result) = value;
    return hr;
}

HRESULT give(Step step, void* result, Object& object) {
    const HRESULT hr = give<void*>(step, result, &object);
    host->references += hr == S_OK ? 1 : 0;
    return hr;
}

// Each object is asked for one interface beside its own.
HRESULT STDMETHODCALLTYPE query(void*, REFIID iid, void** object) {
    *object = nullptr;
    return iid == IID_IServiceProvider ? give(Step::serviceProvider, object, provider)
           : iid == IID_IHTMLWindow2   ? give(Step::htmlWindow, object, htmlWindow)
           : iid == IID_IHTMLDocument2 ? give(Step::htmlDocument, object, document)
                                       : E_NOINTERFACE;
}

HRESULT STDMETHODCALLTYPE siteService(void*, REFGUID service, REFIID iid, void** result) {
    constexpr GUID windowService{0xD48A6EC6, 0x6A4A, 0x11CF, {0x94, 0xA7, 0x44, 0x45, 0x53, 0x54, 0, 0}};
    if (service == SID_SWebBrowserApp && iid == IID_IWebBrowser2)
        return give(Step::browserService, result, host->isTopContainer ? topBrowser : innerBrowser);
    if (service == SID_STopLevelBrowser && iid == IID_IServiceProvider)
        return give(Step::topFrameService, result, frame);
    if (service == windowService && iid == IID_IUnknown)
        return give(Step::htmlWindowService, result, htmlWindow);
    return E_UNEXPECTED;
}

HRESULT STDMETHODCALLTYPE frameService(void*, REFGUID service, REFIID, void** result) {
    return service == SID_SWebBrowserApp ? give(Step::topBrowserService, result, topBrowser) : E_UNEXPECTED;
}

// The methods that give one thing have one form. Texts are the caller's.
template <Step step>
HRESULT STDMETHODCALLTYPE get(void*, void* result) {
    switch (step) {
        case Step::url:
            return give(step, result, ::SysAllocString(host->url.c_str()));
        case Step::href:
            return give(step, result, ::SysAllocString(host->href.c_str()));
        case Step::window:
            return give(step, result, host->window);
        case Step::topLevelContainer:
            return give<VARIANT_BOOL>(step, result, host->isTopContainer ? VARIANT_TRUE : VARIANT_FALSE);
        default:
            return give(step, result, step == Step::document ? document : location);
    }
}

}  // namespace

FakeHost::FakeHost() {
    host = this;
    provider.set(offsetof(IServiceProviderVtbl, QueryService), &siteService);
    frame.set(offsetof(IServiceProviderVtbl, QueryService), &frameService);
    // Only the outermost browser may be asked for its window and document.
    innerBrowser.set(offsetof(IWebBrowser2Vtbl, get_TopLevelContainer), &get<Step::topLevelContainer>);
    topBrowser.set(offsetof(IWebBrowser2Vtbl, get_TopLevelContainer), &get<Step::topLevelContainer>);
    topBrowser.set(offsetof(IWebBrowser2Vtbl, get_HWND), &get<Step::window>);
    topBrowser.set(offsetof(IWebBrowser2Vtbl, get_Document), &get<Step::document>);
    document.set(offsetof(IHTMLDocument2Vtbl, get_URL), &get<Step::url>);
    htmlWindow.set(offsetof(IHTMLWindow2Vtbl, get_location), &get<Step::location>);
    location.set(offsetof(IHTMLLocationVtbl, get_href), &get<Step::href>);
}

FakeHost::~FakeHost() {
    host = nullptr;
}

IUnknown* FakeHost::site() {
    return reinterpret_cast<IUnknown*>(&provider);
}

}  // namespace Corvane
