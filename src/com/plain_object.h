// COM objects that are no more than their interfaces: what Object is for coclasses, without late binding and
// all the rest that scripts ask for.
#pragma once

#include "com/ptr.h"

#include <windows.h>

#include <unknwn.h>

#include <atomic>

namespace Corvane::Com {

// The references held on an object, of which its maker has the first one. Any thread.
class ReferenceCount {
public:
    // Both return how many there are then.
    ULONG add() noexcept { return count_.fetch_add(1, std::memory_order_relaxed) + 1; }
    ULONG drop() noexcept { return count_.fetch_sub(1, std::memory_order_acq_rel) - 1; }

private:
    std::atomic<ULONG> count_{1};
};

// Implements IUnknown. `First`, `Others`: the interfaces that QueryInterface answers besides; the first one
// is the object's identity.
template <class First, class... Others>
class PlainObject : public First, public Others... {
public:
    PlainObject() = default;
    PlainObject(const PlainObject&) = delete;
    PlainObject& operator=(const PlainObject&) = delete;
    virtual ~PlainObject() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!object)
            return E_POINTER;
        *object = iid == __uuidof(IUnknown) ? static_cast<First*>(this) : find<First, Others...>(iid);
        if (!*object)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() override { return references_.add(); }

    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = references_.drop();
        if (left == 0)
            delete this;
        return left;
    }

private:
    template <class Interface, class... Rest>
    void* find(REFIID iid) noexcept {
        if (iid == __uuidof(Interface))
            return static_cast<Interface*>(this);
        if constexpr (sizeof...(Rest) > 0)
            return find<Rest...>(iid);
        return nullptr;
    }

    ReferenceCount references_;
};

}  // namespace Corvane::Com
