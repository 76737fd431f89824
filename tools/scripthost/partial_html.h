// The HTML interfaces of which the host implements one member each: every other member says E_NOTIMPL. The
// lists follow the interfaces' declarations.
#pragma once

#include "com/runtime/plain_object.h"
#include "unscriptable.h"

#include <mshtml.h>

namespace ScriptHost {

// All of a window but its location.
class PartialHtmlWindow : public Unscriptable<Corvane::Com::PlainObject<IHTMLWindow2>> {
public:
    HRESULT STDMETHODCALLTYPE item(VARIANT*, VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_length(LONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_frames(IHTMLFramesCollection2**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_defaultStatus(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_defaultStatus(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_status(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_status(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE setTimeout(BSTR, LONG, VARIANT*, LONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE clearTimeout(LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE alert(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE confirm(BSTR, VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE prompt(BSTR, BSTR, VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Image(IHTMLImageElementFactory**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_history(IOmHistory**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE close() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_opener(VARIANT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_opener(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_navigator(IOmNavigator**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_name(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_name(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_parent(IHTMLWindow2**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE open(BSTR, BSTR, BSTR, VARIANT_BOOL, IHTMLWindow2**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE get_self(IHTMLWindow2**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_top(IHTMLWindow2**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_window(IHTMLWindow2**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE navigate(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_onfocus(VARIANT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_onfocus(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_onblur(VARIANT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_onblur(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_onload(VARIANT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_onload(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_onbeforeunload(VARIANT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_onbeforeunload(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_onunload(VARIANT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_onunload(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_onhelp(VARIANT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_onhelp(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_onerror(VARIANT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_onerror(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_onresize(VARIANT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_onresize(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_onscroll(VARIANT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_onscroll(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_document(IHTMLDocument2**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_event(IHTMLEventObj**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get__newEnum(IUnknown**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE showModalDialog(BSTR, VARIANT*, VARIANT*, VARIANT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE showHelp(BSTR, VARIANT, BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_screen(IHTMLScreen**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_Option(IHTMLOptionElementFactory**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE focus() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_closed(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE blur() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE scroll(LONG, LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_clientInformation(IOmNavigator**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE setInterval(BSTR, LONG, VARIANT*, LONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE clearInterval(LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_offscreenBuffering(VARIANT) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_offscreenBuffering(VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE execScript(BSTR, BSTR, VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE toString(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE scrollBy(LONG, LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE scrollTo(LONG, LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE moveTo(LONG, LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE moveBy(LONG, LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE resizeTo(LONG, LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE resizeBy(LONG, LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_external(IDispatch**) override { return E_NOTIMPL; }
};

// All of a location but its address.
class PartialHtmlLocation : public Unscriptable<Corvane::Com::PlainObject<IHTMLLocation>> {
public:
    HRESULT STDMETHODCALLTYPE put_href(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_protocol(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_protocol(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_host(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_host(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_hostname(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_hostname(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_port(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_port(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_pathname(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_pathname(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_search(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_search(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE put_hash(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE get_hash(BSTR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE reload(VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE replace(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE assign(BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE toString(BSTR*) override { return E_NOTIMPL; }
};

}  // namespace ScriptHost
