#include "com/objects/crypto/certificate_arguments.h"

#include "com/objects/crypto/certificate_collection.h"
#include "com/objects/crypto/certificate_object.h"
#include "com/runtime/arguments.h"

#include <string>
#include <utility>

namespace Corvane::Com {
namespace {

[[noreturn]] void mismatch() {
    throw SilentFailure{DISP_E_TYPEMISMATCH};
}

// The implementation behind an object; empty when it is not one of ours.
ComPtr<Implementation> ours(const ComPtr<IUnknown>& object) {
    try {
        return implementationOf(object.get());
    } catch (const SilentFailure&) {
        return {};
    }
}

SharedCertificate certificateIn(const VARIANT& element) {
    const ComPtr<Implementation> implementation = ours(objectIn(plainValue(element)));
    const auto* certificate = dynamic_cast<CCertificate*>(implementation.get());
    if (!certificate)
        mismatch();
    return certificate->certificate();
}

bool findMember(IDispatch& object, std::wstring name, DISPID& id) {
    LPOLESTR text = name.data();
    return SUCCEEDED(object.GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &id));
}

// A member of an object of the script host.
Variant member(IDispatch& object, std::wstring name) {
    DISPID id = DISPID_UNKNOWN;
    DISPPARAMS none{};
    Variant value;
    if (!findMember(object, std::move(name), id) ||
        FAILED(object.Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none, value.put(),
                             nullptr, nullptr)))
        mismatch();
    return value;
}

// A function has a length, too: the number of its parameters.
bool isFunction(IDispatch& object) {
    DISPID id = DISPID_UNKNOWN;
    return findMember(object, L"call", id) && findMember(object, L"apply", id);
}

Certificates fromScriptArray(const ComPtr<IUnknown>& object) {
    const ComPtr<IDispatch> array = object.query<IDispatch>();
    if (!array || isFunction(*array))
        mismatch();
    Variant length = member(*array, L"length");
    if (FAILED(::VariantChangeType(&length.get(), &length.get(), 0, VT_UI4)))
        mismatch();
    Certificates certificates;
    for (ULONG i = 0; i < V_UI4(&length.get()); ++i)
        certificates.push_back(certificateIn(member(*array, std::to_wstring(i)).get()));
    return certificates;
}

Certificates fromSafeArray(SAFEARRAY* array) {
    // What VBScript declares without a size has no elements yet.
    if (!array)
        return {};
    VARTYPE type = VT_EMPTY;
    LONG lower = 0;
    LONG upper = 0;
    if (::SafeArrayGetDim(array) != 1 || FAILED(::SafeArrayGetVartype(array, &type)) ||
        FAILED(::SafeArrayGetLBound(array, 1, &lower)) || FAILED(::SafeArrayGetUBound(array, 1, &upper)) ||
        (type != VT_VARIANT && type != VT_DISPATCH && type != VT_UNKNOWN))
        mismatch();
    Certificates certificates;
    for (LONGLONG i = lower; i <= upper; ++i) {
        LONG index = static_cast<LONG>(i);
        Variant element;
        void* target = &V_UNKNOWN(element.put());
        if (type == VT_VARIANT)
            target = &element.get();
        if (FAILED(::SafeArrayGetElement(array, &index, target)))
            mismatch();
        if (type != VT_VARIANT)
            V_VT(&element.get()) = type;
        certificates.push_back(certificateIn(element.get()));
    }
    return certificates;
}

Certificates fromObject(const ComPtr<IUnknown>& object) {
    if (!object)
        return {};
    const ComPtr<Implementation> implementation = ours(object);
    if (!implementation)
        return fromScriptArray(object);
    if (const auto* certificate = dynamic_cast<CCertificate*>(implementation.get()))
        return {certificate->certificate()};
    if (const auto* collection = dynamic_cast<CCertificateCollection*>(implementation.get()))
        return collection->certificates();
    mismatch();
}

}  // namespace

Certificates certificatesOf(const VARIANT& argument) {
    const Variant value = plainValue(argument);
    if (isLeftOut(value))
        return {};
    const VARTYPE type = V_VT(&value.get());
    if ((type & VT_ARRAY) != 0)
        return fromSafeArray(V_ARRAY(&value.get()));
    if (type == VT_DISPATCH || type == VT_UNKNOWN)
        return fromObject(objectIn(value));
    mismatch();
}

}  // namespace Corvane::Com
