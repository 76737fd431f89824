#include "com/enum_variant.h"

#include "com/module.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>

namespace Corvane::Com {
namespace {

using Items = std::vector<ComPtr<IDispatch>>;

class EnumVariant final : public IEnumVARIANT {
public:
    EnumVariant(std::shared_ptr<const Items> items, std::size_t position) noexcept
        : items_(std::move(items)), position_(position) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!object)
            return E_POINTER;
        const bool known = iid == __uuidof(IUnknown) || iid == __uuidof(IEnumVARIANT);
        *object = known ? static_cast<IEnumVARIANT*>(this) : nullptr;
        if (!known)
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

    HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* variants, ULONG* fetched) override {
        // Without `fetched` only one element may be asked for, as the caller could not tell how many it got.
        if (!variants || (!fetched && count != 1))
            return E_POINTER;
        ULONG done = 0;
        for (; done < count && position_ < items_->size(); ++done, ++position_) {
            V_VT(&variants[done]) = VT_DISPATCH;
            V_DISPATCH(&variants[done]) = ComPtr<IDispatch>((*items_)[position_]).detach();
        }
        if (fetched)
            *fetched = done;
        return done == count ? S_OK : S_FALSE;
    }

    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
        const std::size_t left = items_->size() - position_;
        position_ += std::min<std::size_t>(count, left);
        return count <= left ? S_OK : S_FALSE;
    }

    HRESULT STDMETHODCALLTYPE Reset() override {
        position_ = 0;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** clone) override {
        if (!clone)
            return E_POINTER;
        *clone = new (std::nothrow) EnumVariant(items_, position_);
        return *clone ? S_OK : E_OUTOFMEMORY;
    }

private:
    ~EnumVariant() = default;

    ModuleReference module_;
    std::shared_ptr<const Items> items_;
    std::size_t position_;
    std::atomic<ULONG> references_{1};
};

}  // namespace

ComPtr<IUnknown> makeEnumerator(std::vector<ComPtr<IDispatch>> items) {
    return ComPtr<IUnknown>::adopt(new EnumVariant(std::make_shared<const Items>(std::move(items)), 0));
}

}  // namespace Corvane::Com
