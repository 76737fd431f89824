// From the arguments of a method to the component's own values, and from results back to COM.
// All of these are for use inside a frame: they end the method by throwing.
#pragma once

#include "com/runtime/automation.h"
#include "com/runtime/object.h"
#include "com/runtime/ptr.h"

#include <string_view>
#include <type_traits>

namespace Corvane::Com {

// The implementation object behind an interface pointer. A null pointer is E_POINTER; an object that is not
// ours fails with its own HRESULT; both without error information.
ComPtr<Implementation> implementationOf(IUnknown* object);

// The object of class T behind an interface pointer; one of ours that is not a T is E_NOINTERFACE.
template <class T>
ComPtr<T> resolve(IUnknown* object) {
    const ComPtr<Implementation> implementation = implementationOf(object);
    T* resolved = dynamic_cast<T*>(implementation.get());
    if (!resolved)
        throw SilentFailure{E_NOINTERFACE};
    return ComPtr<T>(resolved);
}

// An argument of type VARIANT without the references that scripts put in between. What cannot be copied is
// DISP_E_TYPEMISMATCH.
Variant plainValue(const VARIANT& argument);

// Whether a plain value stands for an argument that was not passed: left out, undefined or null.
bool isLeftOut(const Variant& value) noexcept;

// The object in a plain value; empty when it holds none, or Nothing.
ComPtr<IUnknown> objectIn(const Variant& value) noexcept;

// The object behind an argument that need not be passed: empty when it is left out, undefined, null or
// VBScript's Nothing. Anything but an object is DISP_E_TYPEMISMATCH.
ComPtr<IUnknown> optionalObject(const VARIANT& argument);

// Hands a result to the caller; E_POINTER when there is nowhere to put it.
template <class Out>
void give(Out* out, std::type_identity_t<Out> value) {
    if (!out)
        throw SilentFailure{E_POINTER};
    *out = value;
}

inline void give(BSTR* out, Bstr text) {
    if (!out)
        throw SilentFailure{E_POINTER};
    *out = text.detach();
}

inline void give(BSTR* out, std::wstring_view text) {
    give(out, Bstr(text));
}

inline void give(VARIANT* out, Variant value) {
    if (!out)
        throw SilentFailure{E_POINTER};
    *out = value.detach();
}

template <class Interface, class T>
void give(Interface** out, ComPtr<T> object) {
    if (!out)
        throw SilentFailure{E_POINTER};
    *out = object.detach();
}

inline VARIANT_BOOL variantBool(bool value) noexcept {
    return value ? VARIANT_TRUE : VARIANT_FALSE;
}

}  // namespace Corvane::Com
