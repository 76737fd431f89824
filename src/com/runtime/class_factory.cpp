#include "com/runtime/class_factory.h"

#include "com/runtime/module.h"
#include "com/runtime/plain_object.h"
#include "com/runtime/ptr.h"

#include <algorithm>
#include <new>

namespace Corvane::Com {
namespace {

class ClassFactory final : public PlainObject<IClassFactory> {
public:
    explicit ClassFactory(const Coclass& coclass) noexcept : coclass_(coclass) {}

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (!object)
            return E_POINTER;
        *object = nullptr;
        if (outer)
            return CLASS_E_NOAGGREGATION;
        try {
            return ComPtr<IUnknown>::adopt(coclass_.create())->QueryInterface(iid, object);
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        } catch (...) {
            return E_UNEXPECTED;
        }
    }

    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        if (lock)
            Module::add();
        else
            Module::remove();
        return S_OK;
    }

private:
    const Coclass& coclass_;
    ModuleReference module_;
};

}  // namespace

HRESULT getClassObject(const CLSID& clsid, REFIID iid, void** object) noexcept {
    if (!object)
        return E_POINTER;
    *object = nullptr;
    const auto all = coclasses();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Coclass& c) { return *c.clsid == clsid; });
    if (found == all.end() || !found->create)
        return CLASS_E_CLASSNOTAVAILABLE;
    const auto factory = ComPtr<IClassFactory>::adopt(new (std::nothrow) ClassFactory(*found));
    return factory ? factory->QueryInterface(iid, object) : E_OUTOFMEMORY;
}

}  // namespace Corvane::Com
