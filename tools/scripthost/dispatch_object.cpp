#include "dispatch_object.h"

#include <cwchar>
#include <new>

namespace ScriptHost {
namespace {

using Corvane::Com::Bstr;
using Corvane::Com::Variant;

void describe(const CallError& error, EXCEPINFO* exception) {
    if (!exception)
        return;
    *exception = EXCEPINFO{};
    exception->scode = error.code;
    exception->bstrSource = ::SysAllocString(L"WScript");
    exception->bstrDescription = ::SysAllocString(error.description.c_str());
}

}  // namespace

CallArguments::CallArguments(const DISPPARAMS& parameters) {
    values_.resize(parameters.cArgs);
    for (UINT i = 0; i < parameters.cArgs; ++i) {
        if (FAILED(::VariantCopyInd(values_[i].put(), &parameters.rgvarg[parameters.cArgs - 1 - i])))
            throw CallError{DISP_E_TYPEMISMATCH, L"Type mismatch"};
    }
}

const VARIANT& CallArguments::at(std::size_t index) const {
    if (index >= values_.size())
        throw CallError{DISP_E_BADPARAMCOUNT, L"Too few arguments"};
    return values_[index].get();
}

std::wstring CallArguments::text(std::size_t index) const {
    return std::wstring(Corvane::Com::viewOf(converted(at(index), VT_BSTR).get().bstrVal));
}

long CallArguments::number(std::size_t index) const {
    return converted(at(index), VT_I4).get().lVal;
}

HRESULT DispatchObject::GetTypeInfoCount(UINT* count) {
    *count = 0;
    return S_OK;
}

HRESULT DispatchObject::GetTypeInfo(UINT, LCID, ITypeInfo** info) {
    *info = nullptr;
    return DISP_E_BADINDEX;
}

HRESULT DispatchObject::GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
    for (UINT i = 0; i < count; ++i)
        ids[i] = DISPID_UNKNOWN;
    for (const Member& member : members_) {
        if (count == 1 && !member.name.empty() && _wcsicmp(member.name.c_str(), names[0]) == 0) {
            ids[0] = member.id;
            return S_OK;
        }
    }
    return DISP_E_UNKNOWNNAME;
}

HRESULT DispatchObject::Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                               EXCEPINFO* exception, UINT*) {
    const Member* member = find(id);
    if (!member || (flags & (DISPATCH_METHOD | DISPATCH_PROPERTYGET)) == 0)
        return DISP_E_MEMBERNOTFOUND;
    try {
        Variant value;
        const HRESULT hr = call(*member, flags, *parameters, value.get(), exception);
        if (SUCCEEDED(hr) && result)
            *result = value.detach();
        return hr;
    } catch (const CallError& error) {
        describe(error, exception);
        return DISP_E_EXCEPTION;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const std::exception&) {
        return E_FAIL;
    }
}

HRESULT DispatchObject::call(const Member& member, WORD flags, DISPPARAMS& parameters, VARIANT& result,
                             EXCEPINFO* exception) {
    if (member.method) {
        member.method(CallArguments(parameters), result);
        return S_OK;
    }
    if (parameters.cArgs == 0) {
        member.getter(result);
        return S_OK;
    }
    Variant object;
    member.getter(object.get());
    if (object.get().vt != VT_DISPATCH)
        return DISP_E_BADPARAMCOUNT;
    return object.get().pdispVal->Invoke(DISPID_VALUE, GUID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                                         &result, exception, nullptr);
}

void DispatchObject::addMethod(const wchar_t* name, Method method) {
    members_.push_back({static_cast<DISPID>(members_.size() + 1), name, std::move(method), {}});
}

void DispatchObject::addProperty(const wchar_t* name, Getter getter) {
    members_.push_back({static_cast<DISPID>(members_.size() + 1), name, {}, std::move(getter)});
}

void DispatchObject::addDefault(Method method) {
    members_.push_back({DISPID_VALUE, {}, std::move(method), {}});
}

void DispatchObject::addEnumerator(Getter getter) {
    members_.push_back({DISPID_NEWENUM, {}, {}, std::move(getter)});
}

const DispatchObject::Member* DispatchObject::find(DISPID id) const {
    for (const Member& member : members_) {
        if (member.id == id)
            return &member;
    }
    return nullptr;
}

Variant converted(const VARIANT& value, VARTYPE type) {
    Variant result;
    // The header's declaration lacks a const.
    const HRESULT hr = ::VariantChangeType(result.put(), const_cast<VARIANT*>(&value), 0, type);
    if (FAILED(hr))
        throw CallError{hr, type == VT_BSTR ? L"The value has no text" : L"The value is no number"};
    return result;
}

void setText(VARIANT& result, std::wstring_view text) {
    result.bstrVal = Bstr(text).detach();
    result.vt = VT_BSTR;
}

void setNumber(VARIANT& result, long number) {
    result.lVal = number;
    result.vt = VT_I4;
}

void setObject(VARIANT& result, IDispatch* object) {
    result.pdispVal = ComPtr<IDispatch>(object).detach();
    result.vt = VT_DISPATCH;
}

}  // namespace ScriptHost
