// What the script engine, and through it every object that a script creates, sees of the host.
#pragma once

#include "com/runtime/plain_object.h"

#include <activscp.h>
#include <mshtml.h>
#include <servprov.h>

#include <string>
#include <vector>

namespace ScriptHost {

using Corvane::Com::ComPtr;
using Corvane::Com::makeObject;
using Corvane::Com::PlainObject;

class Site final : public PlainObject<IActiveScriptSite, IActiveScriptSiteWindow, IServiceProvider> {
public:
    // With an empty `url` the site is a plain host's; otherwise it offers an HTML window at that address.
    explicit Site(const std::wstring& url);

    // Names the next script for error messages; returns the number that the engine reports with its errors.
    DWORD addScript(const std::wstring& path);
    // The object behind the global name WScript; kept until it is set to null.
    void setHostObject(IDispatch* object);
    // Whether an error was reported.
    bool hasFailed() const { return failed_; }

    // IActiveScriptSite
    HRESULT STDMETHODCALLTYPE GetLCID(LCID* locale) override;
    HRESULT STDMETHODCALLTYPE GetItemInfo(LPCOLESTR name, DWORD wanted, IUnknown** item,
                                          ITypeInfo** type) override;
    HRESULT STDMETHODCALLTYPE GetDocVersionString(BSTR* version) override;
    HRESULT STDMETHODCALLTYPE OnScriptTerminate(const VARIANT* result, const EXCEPINFO* exception) override;
    HRESULT STDMETHODCALLTYPE OnStateChange(SCRIPTSTATE state) override;
    HRESULT STDMETHODCALLTYPE OnScriptError(IActiveScriptError* error) override;
    HRESULT STDMETHODCALLTYPE OnEnterScript() override;
    HRESULT STDMETHODCALLTYPE OnLeaveScript() override;

    // IActiveScriptSiteWindow
    HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) override;
    HRESULT STDMETHODCALLTYPE EnableModeless(BOOL enable) override;

    // IServiceProvider
    HRESULT STDMETHODCALLTYPE QueryService(REFGUID service, REFIID iid, void** object) override;

private:
    ComPtr<IHTMLWindow2> window_;
    ComPtr<IDispatch> hostObject_;
    std::vector<std::wstring> scripts_;
    bool failed_ = false;
};

}  // namespace ScriptHost
