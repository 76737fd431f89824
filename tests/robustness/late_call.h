// One call through IDispatch, as a script engine makes it.
#pragma once

#include "component.h"

#include <initializer_list>
#include <vector>

namespace robustness {

inline VARIANT variantOf(VARTYPE type, LONGLONG bits = 0) {
    VARIANT value;
    ::VariantInit(&value);
    V_I8(&value) = bits;
    V_VT(&value) = type;
    return value;
}

// The outcome of a call: what Invoke returned, its result, and the exception it described.
class LateCall {
public:
    // `arguments` in the order of the script; they stay the caller's.
    LateCall(IDispatch& object, DISPID member, std::initializer_list<VARIANT> arguments,
             WORD flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET) {
        std::vector<VARIANT> reversed(std::rbegin(arguments), std::rend(arguments));
        DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
        UINT bad = 0;
        hr = object.Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters, result.put(),
                           &exception, &bad);
        if (hr == DISP_E_EXCEPTION && exception.pfnDeferredFillIn)
            exception.pfnDeferredFillIn(&exception);
    }
    LateCall(const LateCall&) = delete;
    LateCall& operator=(const LateCall&) = delete;
    ~LateCall() {
        ::SysFreeString(exception.bstrSource);
        ::SysFreeString(exception.bstrDescription);
        ::SysFreeString(exception.bstrHelpFile);
    }

    // What the member itself failed with; the failure of the call where there was none.
    HRESULT failure() const { return hr == DISP_E_EXCEPTION ? exception.scode : hr; }

    HRESULT hr = E_UNEXPECTED;
    Variant result;
    EXCEPINFO exception{};
};

}  // namespace robustness
