#include "recorder.h"

#include <algorithm>
#include <atomic>

namespace Corvane::Platform {
namespace {

constexpr GUID enrollmentGuid(unsigned long first) {
    return {first, 0x217D, 0x11DA, {0xB2, 0xA4, 0x00, 0x0E, 0x7B, 0xBB, 0x2B, 0x09}};
}

std::vector<std::wstring> memberNames;

// An object on the heap with the reference of whoever made it.
template <class Interface>
class Counted : public Interface {
public:
    explicit Counted(const IID& iid) : iid_(iid) {}
    virtual ~Counted() = default;

    HRESULT WINAPI QueryInterface(REFIID iid, void** object) override {
        *object = iid == IID_IUnknown || iid == __uuidof(Interface) || iid == iid_ ? this : nullptr;
        if (!*object)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG WINAPI AddRef() override { return ++references_; }
    ULONG WINAPI Release() override {
        const ULONG left = --references_;
        if (left == 0)
            delete this;
        return left;
    }

private:
    IID iid_;
    std::atomic<ULONG> references_ = 1;
};

class Object final : public Counted<IDispatch> {
public:
    Object(std::wstring name, const IID& iid, const Recorder& recorder)
        : Counted(iid), name_(std::move(name)), recorder_(recorder) {}

    HRESULT WINAPI GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT WINAPI GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT WINAPI GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* ids) override {
        const auto found = std::ranges::find(memberNames, names[0]);
        ids[0] = static_cast<DISPID>(found - memberNames.begin()) + 1;
        if (found == memberNames.end())
            memberNames.emplace_back(names[0]);
        return S_OK;
    }
    HRESULT WINAPI Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* parameters, VARIANT* result,
                          EXCEPINFO* exception, UINT*) override {
        const std::wstring& member = memberNames.at(static_cast<std::size_t>(id) - 1);
        recorder_.note(name_ + L"." + member + argumentsText(kind, *parameters));
        if (const HRESULT hr = recorder_.judge(member); FAILED(hr)) {
            // As automation reports it, with the text that has to be freed.
            exception->bstrDescription = ::SysAllocString(L"recorded failure");
            exception->scode = hr;
            return DISP_E_EXCEPTION;
        }
        if (result)
            answer(member, *result);
        return S_OK;
    }

private:
    static std::wstring valueText(const VARIANT& value) {
        switch (V_VT(&value)) {
            case VT_I4:
                return std::to_wstring(V_I4(&value));
            case VT_BOOL:
                return V_BOOL(&value) ? L"true" : L"false";
            case VT_DISPATCH:
                return static_cast<Object*>(V_DISPATCH(&value))->name_;
            case VT_BSTR: {
                const std::wstring text(V_BSTR(&value), ::SysStringLen(V_BSTR(&value)));
                return text.size() > 60 ? std::to_wstring(text.size()) + L" characters" : L"'" + text + L"'";
            }
            default:
                return L"?";
        }
    }

    static std::wstring argumentsText(WORD kind, const DISPPARAMS& parameters) {
        std::wstring text;
        for (UINT i = parameters.cArgs; i-- > 0;)
            text += (text.empty() ? L"" : L", ") + valueText(parameters.rgvarg[i]);
        if (kind != DISPATCH_PROPERTYPUT)
            return kind == DISPATCH_PROPERTYGET ? std::wstring() : L"(" + text + L")";
        const bool proper =
            parameters.cNamedArgs == 1 && parameters.rgdispidNamedArgs[0] == DISPID_PROPERTYPUT;
        return (proper ? L"=" : L"?=") + text;
    }

    void answer(const std::wstring& member, VARIANT& result) {
        if (member == L"PrivateKey") {
            V_VT(&result) = VT_DISPATCH;
            V_DISPATCH(&result) = new Object(L"key", IID_IDispatch, recorder_);
        } else if (member == L"RawData" || member == L"createRequest") {
            V_VT(&result) = VT_BSTR;
            V_BSTR(&result) = ::SysAllocString(recorder_.answer().c_str());
        }
    }

    std::wstring name_;
    const Recorder& recorder_;
};

class Factory final : public Counted<IClassFactory> {
public:
    Factory(const RecordedClass& recorded, const Recorder& recorder)
        : Counted(IID_IClassFactory), recorded_(recorded), recorder_(recorder) {}

    HRESULT WINAPI CreateInstance(IUnknown*, REFIID iid, void** object) override {
        recorder_.note(std::wstring(L"new ") + recorded_.name);
        if (const HRESULT hr = recorder_.judge(recorded_.name); FAILED(hr))
            return hr;
        auto* made = new Object(recorded_.name, recorded_.iid, recorder_);
        const HRESULT hr = made->QueryInterface(iid, object);
        made->Release();
        return hr;
    }
    HRESULT WINAPI LockServer(BOOL) override { return S_OK; }

private:
    const RecordedClass& recorded_;
    const Recorder& recorder_;
};

}  // namespace

const RecordedClass recordedClasses[4] = {
    {L"pkcs10", enrollmentGuid(0x884E2042), enrollmentGuid(0x728AB342)},
    {L"pkcs7", enrollmentGuid(0x884E2044), enrollmentGuid(0x728AB344)},
    {L"signer", enrollmentGuid(0x884E203D), enrollmentGuid(0x728AB33D)},
    {L"control",
     {0x43F8F289, 0x7A20, 0x11D0, {0x8F, 0x06, 0x00, 0xC0, 0x4F, 0xC2, 0x95, 0xE1}},
     {0xF8053FE5, 0x78F4, 0x448F, {0xA0, 0xDB, 0x41, 0xD6, 0x1B, 0x73, 0x44, 0x6B}}},
};

IClassFactory* makeRecordingFactory(const RecordedClass& recorded, const Recorder& recorder) {
    return new Factory(recorded, recorder);
}

}  // namespace Corvane::Platform
