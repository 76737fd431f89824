#include "html_window.h"

#include "partial_html.h"

namespace ScriptHost {
namespace {

class HtmlLocation final : public PartialHtmlLocation {
public:
    explicit HtmlLocation(std::wstring address) : address_(std::move(address)) {}

    HRESULT STDMETHODCALLTYPE get_href(BSTR* href) override {
        if (!href)
            return E_POINTER;
        *href = ::SysAllocString(address_.c_str());
        return *href ? S_OK : E_OUTOFMEMORY;
    }

private:
    std::wstring address_;
};

class HtmlWindow final : public PartialHtmlWindow {
public:
    explicit HtmlWindow(std::wstring address) : location_(makeObject<HtmlLocation>(std::move(address))) {}

    HRESULT STDMETHODCALLTYPE get_location(IHTMLLocation** location) override {
        if (!location)
            return E_POINTER;
        *location = ComPtr<IHTMLLocation>(location_.get()).detach();
        return S_OK;
    }

private:
    ComPtr<HtmlLocation> location_;
};

}  // namespace

ComPtr<IHTMLWindow2> makeHtmlWindow(std::wstring address) {
    return ComPtr<IHTMLWindow2>::adopt(makeObject<HtmlWindow>(std::move(address)).detach());
}

}  // namespace ScriptHost
