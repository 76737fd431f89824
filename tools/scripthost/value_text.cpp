#include "value_text.h"

#include "dispatch_object.h"

namespace ScriptHost {

std::wstring valueText(const VARIANT& value, const wchar_t* unset) {
    if (value.vt == VT_EMPTY)
        return unset;
    if (value.vt == VT_NULL || (value.vt == VT_DISPATCH && !value.pdispVal))
        return L"null";
    return std::wstring(Corvane::Com::viewOf(converted(value, VT_BSTR).get().bstrVal));
}

}  // namespace ScriptHost
