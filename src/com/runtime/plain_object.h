// How every object counts its references and hands out its interfaces.
#pragma once

#include "com/runtime/ptr.h"

#include <windows.h>

#include <unknwn.h>

#include <atomic>

namespace Corvane::Com {

// Implements IUnknown for `Bases`, each a COM interface or made from one. The maker holds the first
// reference; any thread may take and drop others, and the last one to drop deletes the object.
template <class... Bases>
class Counted : public Bases... {
public:
    Counted() = default;
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!object)
            return E_POINTER;
        *object = findInterface(iid);
        if (!*object)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() override {
        return references_.fetch_add(1, std::memory_order_relaxed) + 1;
    }

    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0)
            delete this;
        return left;
    }

protected:
    virtual ~Counted() = default;

    // The interface's address in this object, or null.
    virtual void* findInterface(REFIID iid) noexcept = 0;

private:
    std::atomic<ULONG> references_{1};
};

// An object that is no more than its interfaces: what Object is for coclasses, without late binding and all
// the rest that scripts ask for. `First` is the object's identity.
template <class First, class... Others>
class PlainObject : public Counted<First, Others...> {
protected:
    void* findInterface(REFIID iid) noexcept override {
        return iid == __uuidof(IUnknown) ? static_cast<First*>(this) : findAmong<First, Others...>(iid);
    }

private:
    template <class Interface, class... Rest>
    void* findAmong(REFIID iid) noexcept {
        if (iid == __uuidof(Interface))
            return static_cast<Interface*>(this);
        if constexpr (sizeof...(Rest) > 0)
            return findAmong<Rest...>(iid);
        return nullptr;
    }
};

}  // namespace Corvane::Com
