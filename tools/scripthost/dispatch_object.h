// Late-bound objects made of named handlers.
#pragma once

#include "com/runtime/automation.h"
#include "com/runtime/plain_object.h"

#include <functional>
#include <string>
#include <vector>

namespace ScriptHost {

using Corvane::Com::ComPtr;
using Corvane::Com::makeObject;
using Corvane::Com::PlainObject;

// A failure that the script sees as an exception with this description.
struct CallError {
    HRESULT code;
    std::wstring description;
};

// The arguments of one call, in the order in which the script wrote them, references resolved.
class CallArguments {
public:
    explicit CallArguments(const DISPPARAMS& parameters);

    std::size_t count() const { return values_.size(); }
    // The accessors throw CallError for an argument that is missing or of another type.
    const VARIANT& at(std::size_t index) const;
    std::wstring text(std::size_t index) const;
    long number(std::size_t index) const;

private:
    std::vector<Corvane::Com::Variant> values_;
};

class DispatchObject : public PlainObject<IDispatch> {
public:
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* ids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* parameters,
                                     VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override;

protected:
    using Method = std::function<void(const CallArguments& arguments, VARIANT& result)>;
    using Getter = std::function<void(VARIANT& result)>;

    // Names are matched without regard to case, as VBScript needs.
    void addMethod(const wchar_t* name, Method method);
    // Arguments given to a property go on to the default member of the object that it yields.
    void addProperty(const wchar_t* name, Getter getter);
    void addDefault(Method method);
    void addEnumerator(Getter getter);

private:
    struct Member {
        DISPID id;
        std::wstring name;
        Method method;
        Getter getter;
    };

    const Member* find(DISPID id) const;
    HRESULT call(const Member& member, WORD flags, DISPPARAMS& parameters, VARIANT& result,
                 EXCEPINFO* exception);

    std::vector<Member> members_;
};

// The value as automation converts it to `type`; throws CallError when it cannot.
Corvane::Com::Variant converted(const VARIANT& value, VARTYPE type);

// Values for `result`.
void setText(VARIANT& result, std::wstring_view text);
void setNumber(VARIANT& result, long number);
void setObject(VARIANT& result, IDispatch* object);

}  // namespace ScriptHost
