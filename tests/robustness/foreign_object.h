// An object that says it is a BinaryObject of the component and is not.
#pragma once

#include "component.h"

namespace robustness {

// Answers every interface it is asked for with itself. All that stands behind it are the seven methods of
// IDispatch: a component that called any further one would crash.
class ForeignObject final : public IDispatch {
public:
    // What QueryInterface(GUID_NULL) answers: `hr`, and when that is a success, `answer`.
    ForeignObject(HRESULT hr, IUnknown* answer) : hr_(hr), answer_(answer) {}

    // As an argument that the component takes for one of its own.
    template <class Interface>
    Interface* as() {
        return static_cast<Interface*>(static_cast<void*>(this));
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        const bool implementation = iid == GUID_NULL;
        IUnknown* const answer = !implementation ? this : SUCCEEDED(hr_) ? answer_ : nullptr;
        if (answer)
            answer->AddRef();
        *object = answer;
        return implementation ? hr_ : S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override { return --references_; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                     UINT*) override {
        return E_NOTIMPL;
    }

    // References held by others.
    ULONG references() const { return references_; }

private:
    HRESULT hr_;
    IUnknown* answer_;
    std::atomic<ULONG> references_{0};
};

}  // namespace robustness
