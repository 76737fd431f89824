#include "com/async/async_callback.h"

#include "core/check.h"
#include "core/exception_text.h"
#include "core/log.h"

#include <dispex.h>

using namespace Corvane;
using namespace Corvane::Com;

namespace {

constexpr wchar_t context[] = L"AsyncCallback";

enum Position : std::size_t {
    self,
    errorText,
    resultValue,
};

// COM for the time of a call; a thread that is in an apartment stays in its own.
class Apartment {
public:
    explicit Apartment(DWORD kind) noexcept : entered_(SUCCEEDED(::CoInitializeEx(nullptr, kind))) {}
    ~Apartment() {
        if (entered_)
            ::CoUninitialize();
    }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;

private:
    bool entered_;
};

void logFailure(const wchar_t* text, HRESULT hr) noexcept {
    try {
        writeLog(LogLevel::error, context, text, numberForLog(static_cast<std::uint32_t>(hr)));
    } catch (...) {
        // The failure has its effect all the same.
    }
}

// A failing script function describes its failure in here; nobody is interested.
struct ExceptionInfo : EXCEPINFO {
    ExceptionInfo() noexcept : EXCEPINFO{} {}
    ~ExceptionInfo() {
        ::SysFreeString(bstrSource);
        ::SysFreeString(bstrDescription);
        ::SysFreeString(bstrHelpFile);
    }
    ExceptionInfo(const ExceptionInfo&) = delete;
    ExceptionInfo& operator=(const ExceptionInfo&) = delete;
};

}  // namespace

AsyncCallback::AsyncCallback(ThreadWindow window, IDispatch* callback) : window_(std::move(window)) {
    const HRESULT hr = callback
                           ? window_.interfaces().RegisterInterfaceInGlobal(callback, IID_IDispatch, &cookie_)
                           : E_POINTER;
    if (FAILED(hr)) {
        logFailure(L"RegisterInterfaceInGlobal error: ", hr);
        throw ComException(E_ACTIVEX, hr);
    }
}

std::unique_ptr<AsyncCallback> AsyncCallback::create(IDispatch* callback) {
    return std::unique_ptr<AsyncCallback>(new AsyncCallback(ThreadWindow::ofThisThread(), callback));
}

AsyncCallback::~AsyncCallback() {
    // Whoever finds the script's thread gone may be a worker without an apartment.
    const Apartment apartment(COINIT_MULTITHREADED);
    if (const HRESULT hr = window_.interfaces().RevokeInterfaceFromGlobal(cookie_); FAILED(hr))
        logFailure(L"RevokeInterfaceFromGlobal error: ", hr);
}

void AsyncCallback::logStep(const wchar_t* step) noexcept {
    try {
        writeLog(LogLevel::info, context, step);
    } catch (...) {
        // A line that cannot be written is lost.
    }
}

void AsyncCallback::convert(const std::function<HRESULT(VARIANT*)>& converter) noexcept {
    try {
        const HRESULT hr = converter(arguments_[resultValue].put());
        if (SUCCEEDED(hr))
            return;
        logFailure(L"convert result error: ", hr);
        throw ComException(E_ACTIVEX, hr);
    } catch (...) {
        error_ = std::current_exception();
    }
}

void AsyncCallback::post(std::unique_ptr<AsyncCallback> self) noexcept {
    logStep(L"post message to window");
    ThreadWindow& window = self->window_;
    ThreadWindow::post(window, std::move(self));
}

// The script is called even when there is no memory for the text: it then gets an empty one.
void AsyncCallback::describeError() noexcept {
    arguments_[resultValue].put();
    VARIANT& text = *arguments_[errorText].put();
    V_VT(&text) = VT_BSTR;
    try {
        V_BSTR(&text) = Bstr(Corvane::textOf(error_)).detach();
    } catch (...) {
        V_BSTR(&text) = ::SysAllocString(E_ACTIVEX.message);
    }
}

void AsyncCallback::call(IDispatch& callback) {
    callback.AddRef();
    VARIANT& self = *arguments_[Position::self].put();
    V_DISPATCH(&self) = &callback;
    V_VT(&self) = VT_DISPATCH;
    if (error_)
        describeError();

    // The named argument comes first, the others in reverse order.
    std::array<VARIANT, 3> passed{};
    for (std::size_t i = 0; i < passed.size(); ++i)
        passed[i] = arguments_[i].get();
    DISPID thisName = DISPID_THIS;
    DISPPARAMS parameters{passed.data(), &thisName, static_cast<UINT>(passed.size()), 1};
    ExceptionInfo exception;
    Variant result;
    logStep(L"invoke javascript callback");
    HRESULT hr = S_OK;
    ComPtr<IDispatchEx> extended;
    if (SUCCEEDED(callback.QueryInterface(__uuidof(IDispatchEx), extended.putVoid())) && extended)
        hr = extended->InvokeEx(DISPID_VALUE, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters, result.put(),
                                &exception, nullptr);
    else
        hr = callback.Invoke(DISPID_VALUE, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                             result.put(), &exception, nullptr);
    // Within the apartment in which the call was made.
    for (Variant& argument : arguments_)
        argument.put();
    if (FAILED(hr))
        logFailure(L"invoke javascript callback error: ", hr);
}

void AsyncCallback::invoke() noexcept {
    const Apartment apartment(COINIT_APARTMENTTHREADED);
    try {
        ComPtr<IDispatch> callback;
        const HRESULT hr =
            window_.interfaces().GetInterfaceFromGlobal(cookie_, IID_IDispatch, callback.putVoid());
        if (FAILED(hr))
            return logFailure(L"GetInterfaceFromGlobal error: ", hr);
        call(*callback);
    } catch (...) {
        logFailure(L"invoke javascript callback error: ", E_OUTOFMEMORY);
    }
}
