// Objects of the system that are called by the names of their members, so that nothing depends on the order
// of interfaces that no header at hand declares.
//
//     request.call(E_INITIALIZE_PKCS10, L"Initialize", 1);
//
// Every failure is a ComException with the descriptor that is given and the HRESULT of the call.
#pragma once

#include "com/runtime/automation.h"
#include "com/runtime/ptr.h"

#include <span>
#include <string_view>

namespace Corvane::Com {

class LateObject {
public:
    // A new object of a class of this process; `iid` is a dual interface.
    static LateObject create(const ErrorDescriptor& descriptor, const CLSID& clsid, const IID& iid);

    template <class... Arguments>
    void call(const ErrorDescriptor& descriptor, const wchar_t* method, const Arguments&... arguments) const {
        getWith(DISPATCH_METHOD, descriptor, method, arguments...);
    }

    // What a method returns, or a property that may have arguments, as text.
    template <class... Arguments>
    std::wstring text(const ErrorDescriptor& descriptor, const wchar_t* member,
                      const Arguments&... arguments) const {
        return textIn(getWith(DISPATCH_METHOD | DISPATCH_PROPERTYGET, descriptor, member, arguments...),
                      descriptor, member);
    }

    // A property that is an object.
    LateObject object(const ErrorDescriptor& descriptor, const wchar_t* property) const;

    template <class Value>
    void put(const ErrorDescriptor& descriptor, const wchar_t* property, const Value& value) const {
        getWith(DISPATCH_PROPERTYPUT, descriptor, property, value);
    }

private:
    explicit LateObject(ComPtr<IDispatch> object) noexcept : object_(std::move(object)) {}

    static Variant toVariant(long number) noexcept;
    static Variant toVariant(bool flag) noexcept;
    static Variant toVariant(std::wstring_view text);
    static Variant toVariant(const LateObject& object) noexcept;
    static std::wstring textIn(const Variant& value, const ErrorDescriptor& descriptor,
                               const wchar_t* member);

    template <class... Arguments>
    Variant getWith(WORD kind, const ErrorDescriptor& descriptor, const wchar_t* member,
                    const Arguments&... arguments) const {
        Variant values[] = {toVariant(arguments)..., Variant()};
        return invoke(kind, descriptor, member, std::span(values, sizeof...(arguments)));
    }
    Variant invoke(WORD kind, const ErrorDescriptor& descriptor, const wchar_t* member,
                   std::span<Variant> arguments) const;

    ComPtr<IDispatch> object_;
};

}  // namespace Corvane::Com
