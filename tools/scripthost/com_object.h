// Reference count and interface table of the host's objects.
#pragma once

#include "com/ptr.h"

#include <windows.h>

#include <utility>

namespace ScriptHost {

using Corvane::Com::ComPtr;

// Implements IUnknown for an object that lives in one apartment. `Interfaces`: those that QueryInterface
// answers besides IUnknown; the first one is the object's identity.
template <class First, class... Others>
class ComObject : public First, public Others... {
public:
    ComObject() = default;
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;
    virtual ~ComObject() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!object)
            return E_POINTER;
        *object = iid == __uuidof(IUnknown) ? static_cast<First*>(this) : find<First, Others...>(iid);
        if (!*object)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }

    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0)
            delete this;
        return left;
    }

private:
    template <class Interface, class... Rest>
    void* find(REFIID iid) {
        if (iid == __uuidof(Interface))
            return static_cast<Interface*>(this);
        if constexpr (sizeof...(Rest) > 0)
            return find<Rest...>(iid);
        return nullptr;
    }

    ULONG references_ = 1;
};

// A new object, whose only reference is the returned one.
template <class T, class... Arguments>
ComPtr<T> make(Arguments&&... arguments) {
    return ComPtr<T>::adopt(new T(std::forward<Arguments>(arguments)...));
}

}  // namespace ScriptHost
