#include "com/enroll/late_object.h"

#include <algorithm>
#include <string>
#include <vector>

namespace Corvane::Com {
namespace {

// What an object says about its failure, and frees.
class Failure {
public:
    Failure() = default;
    Failure(const Failure&) = delete;
    Failure& operator=(const Failure&) = delete;
    ~Failure() {
        ::SysFreeString(info_.bstrSource);
        ::SysFreeString(info_.bstrDescription);
        ::SysFreeString(info_.bstrHelpFile);
    }

    EXCEPINFO* put() noexcept { return &info_; }

    HRESULT resultOf(HRESULT hr) noexcept {
        if (hr != DISP_E_EXCEPTION)
            return hr;
        if (info_.pfnDeferredFillIn)
            info_.pfnDeferredFillIn(&info_);
        return FAILED(info_.scode) ? info_.scode : hr;
    }

private:
    EXCEPINFO info_{};
};

}  // namespace

LateObject LateObject::create(const ErrorDescriptor& descriptor, const CLSID& clsid, const IID& iid) {
    ComPtr<IDispatch> object;
    checkHresult(::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, iid, object.putVoid()), descriptor,
                 L"CoCreateInstance");
    return LateObject(std::move(object));
}

LateObject LateObject::object(const ErrorDescriptor& descriptor, const wchar_t* property) const {
    const Variant value = getWith(DISPATCH_PROPERTYGET, descriptor, property);
    const VARTYPE type = V_VT(&value.get());
    ComPtr<IDispatch> object;
    if (type == VT_DISPATCH || type == VT_UNKNOWN)
        object = ComPtr<IUnknown>(V_UNKNOWN(&value.get())).query<IDispatch>();
    checkHresult(object ? S_OK : E_NOINTERFACE, descriptor, property);
    return LateObject(std::move(object));
}

Variant LateObject::toVariant(long number) noexcept {
    Variant value;
    V_VT(&value.get()) = VT_I4;
    V_I4(&value.get()) = number;
    return value;
}

Variant LateObject::toVariant(bool flag) noexcept {
    Variant value;
    V_VT(&value.get()) = VT_BOOL;
    V_BOOL(&value.get()) = flag ? VARIANT_TRUE : VARIANT_FALSE;
    return value;
}

Variant LateObject::toVariant(std::wstring_view text) {
    Bstr copy(text);
    Variant value;
    V_VT(&value.get()) = VT_BSTR;
    V_BSTR(&value.get()) = copy.detach();
    return value;
}

Variant LateObject::toVariant(const LateObject& object) noexcept {
    Variant value;
    V_VT(&value.get()) = VT_DISPATCH;
    V_DISPATCH(&value.get()) = ComPtr<IDispatch>(object.object_).detach();
    return value;
}

std::wstring LateObject::textIn(const Variant& value, const ErrorDescriptor& descriptor,
                                const wchar_t* member) {
    checkHresult(V_VT(&value.get()) == VT_BSTR ? S_OK : DISP_E_TYPEMISMATCH, descriptor, member);
    return std::wstring(viewOf(V_BSTR(&value.get())));
}

Variant LateObject::invoke(WORD kind, const ErrorDescriptor& descriptor, const wchar_t* member,
                           std::span<Variant> arguments) const {
    std::wstring name = member;
    LPOLESTR names = name.data();
    DISPID id = DISPID_UNKNOWN;
    checkHresult(object_->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id), descriptor, member);

    std::vector<VARIANTARG> reversed;
    for (const Variant& argument : arguments)
        reversed.push_back(argument.get());
    std::ranges::reverse(reversed);
    DISPID putting = DISPID_PROPERTYPUT;
    DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    if (kind == DISPATCH_PROPERTYPUT) {
        parameters.rgdispidNamedArgs = &putting;
        parameters.cNamedArgs = 1;
    }
    Variant result;
    Failure failure;
    const HRESULT hr =
        object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters,
                        kind == DISPATCH_PROPERTYPUT ? nullptr : result.put(), failure.put(), nullptr);
    checkHresult(failure.resultOf(hr), descriptor, member);
    return result;
}

}  // namespace Corvane::Com
