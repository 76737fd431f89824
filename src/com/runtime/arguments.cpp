#include "com/runtime/arguments.h"

namespace Corvane::Com {

ComPtr<Implementation> implementationOf(IUnknown* object) {
    if (!object)
        throw SilentFailure{E_POINTER};
    void* answer = nullptr;
    if (const HRESULT hr = object->QueryInterface(GUID_NULL, &answer); FAILED(hr))
        throw SilentFailure{hr};
    if (!answer)
        throw SilentFailure{E_NOINTERFACE};
    // An object of the script host, or of another copy of the component, may answer anything.
    if (!Module::owns(answer)) {
        static_cast<IUnknown*>(answer)->Release();
        throw SilentFailure{E_NOINTERFACE};
    }
    return ComPtr<Implementation>::adopt(static_cast<Implementation*>(answer));
}

Variant plainValue(const VARIANT& argument) {
    Variant value;
    if (FAILED(::VariantCopyInd(value.put(), const_cast<VARIANT*>(&argument))))
        throw SilentFailure{DISP_E_TYPEMISMATCH};
    return value;
}

bool isLeftOut(const Variant& value) noexcept {
    const VARIANT& plain = value.get();
    return V_VT(&plain) == VT_EMPTY || V_VT(&plain) == VT_NULL ||
           (V_VT(&plain) == VT_ERROR && V_ERROR(&plain) == DISP_E_PARAMNOTFOUND);
}

ComPtr<IUnknown> objectIn(const Variant& value) noexcept {
    switch (V_VT(&value.get())) {
        case VT_DISPATCH:
            return ComPtr<IUnknown>(V_DISPATCH(&value.get()));
        case VT_UNKNOWN:
            return ComPtr<IUnknown>(V_UNKNOWN(&value.get()));
        default:
            return {};
    }
}

ComPtr<IUnknown> optionalObject(const VARIANT& argument) {
    const Variant value = plainValue(argument);
    ComPtr<IUnknown> object = objectIn(value);
    if (!object && !isLeftOut(value) && V_VT(&value.get()) != VT_DISPATCH)
        throw SilentFailure{DISP_E_TYPEMISMATCH};
    return object;
}

}  // namespace Corvane::Com
