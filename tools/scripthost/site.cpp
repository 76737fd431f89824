#include "site.h"

#include "com/runtime/automation.h"
#include "console.h"
#include "exit.h"
#include "html_window.h"
#include "message_loop.h"

#include <cwchar>

namespace ScriptHost {
namespace {

using Corvane::Com::viewOf;

// The service under which a script host hands out its HTML window.
constexpr GUID htmlWindowService = {
    0xd48a6ec6, 0x6a4a, 0x11cf, {0x94, 0xa7, 0x44, 0x45, 0x53, 0x54, 0x00, 0x00}};

// What an error says; its texts are freed with it.
class ErrorTexts : public EXCEPINFO {
public:
    explicit ErrorTexts(IActiveScriptError& error) : EXCEPINFO{} {
        error.GetExceptionInfo(this);
        if (pfnDeferredFillIn)
            pfnDeferredFillIn(this);
    }
    ErrorTexts(const ErrorTexts&) = delete;
    ErrorTexts& operator=(const ErrorTexts&) = delete;
    ~ErrorTexts() {
        ::SysFreeString(bstrSource);
        ::SysFreeString(bstrDescription);
        ::SysFreeString(bstrHelpFile);
    }
};

std::wstring errorText(IActiveScriptError& error, const std::vector<std::wstring>& scripts) {
    DWORD script = 0;
    ULONG line = 0;
    LONG column = 0;
    error.GetSourcePosition(&script, &line, &column);
    const std::wstring name = script < scripts.size() ? scripts[script] : L"script";
    const ErrorTexts texts(error);

    wchar_t code[] = L"0x00000000";
    static_cast<void>(
        std::swprintf(code, std::size(code), L"0x%08lX", static_cast<unsigned long>(texts.scode)));
    std::wstring text = name + L"(" + std::to_wstring(line + 1) + L", " + std::to_wstring(column + 1) + L") ";
    // A value that the script itself threw has no source.
    text += texts.bstrSource ? viewOf(texts.bstrSource) : L"script";
    return text + L": " + std::wstring(viewOf(texts.bstrDescription)) + L" [" + code + L"]\n";
}

}  // namespace

Site::Site(const std::wstring& url) {
    if (!url.empty())
        window_ = makeHtmlWindow(url);
}

DWORD Site::addScript(const std::wstring& path) {
    scripts_.push_back(path);
    return static_cast<DWORD>(scripts_.size() - 1);
}

void Site::setHostObject(IDispatch* object) {
    hostObject_ = ComPtr<IDispatch>(object);
}

HRESULT Site::GetLCID(LCID*) {
    return E_NOTIMPL;  // the user's own
}

HRESULT Site::GetItemInfo(LPCOLESTR name, DWORD wanted, IUnknown** item, ITypeInfo**) {
    if (wanted != SCRIPTINFO_IUNKNOWN || !hostObject_ || _wcsicmp(name, L"WScript") != 0)
        return TYPE_E_ELEMENTNOTFOUND;
    *item = ComPtr<IDispatch>(hostObject_).detach();
    return S_OK;
}

HRESULT Site::GetDocVersionString(BSTR*) {
    return E_NOTIMPL;
}

HRESULT Site::OnScriptTerminate(const VARIANT*, const EXCEPINFO*) {
    return S_OK;
}

HRESULT Site::OnStateChange(SCRIPTSTATE) {
    return S_OK;
}

HRESULT Site::OnScriptError(IActiveScriptError* error) {
    failed_ = true;
    write(Stream::error, errorText(*error, scripts_));
    // Nobody is left to tell when an event's handler fails: the script would wait for it in vain.
    if (isPumping())
        quit(failedStatus);
    return S_OK;
}

HRESULT Site::OnEnterScript() {
    return S_OK;
}

HRESULT Site::OnLeaveScript() {
    return S_OK;
}

HRESULT Site::GetWindow(HWND* window) {
    *window = nullptr;
    return S_OK;
}

HRESULT Site::EnableModeless(BOOL) {
    return S_OK;
}

HRESULT Site::QueryService(REFGUID service, REFIID iid, void** object) {
    if (!object)
        return E_POINTER;
    *object = nullptr;
    if (window_ && service == htmlWindowService)
        return window_->QueryInterface(iid, object);
    return E_NOINTERFACE;
}

}  // namespace ScriptHost
