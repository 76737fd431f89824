#include "com/runtime/enum_variant.h"

#include "com/runtime/module.h"
#include "com/runtime/plain_object.h"

#include <algorithm>
#include <memory>
#include <new>

namespace Corvane::Com {
namespace {

using Items = std::vector<ComPtr<IDispatch>>;

class EnumVariant final : public PlainObject<IEnumVARIANT> {
public:
    EnumVariant(std::shared_ptr<const Items> items, std::size_t position) noexcept
        : items_(std::move(items)), position_(position) {}

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
    ModuleReference module_;
    std::shared_ptr<const Items> items_;
    std::size_t position_;
};

}  // namespace

ComPtr<IUnknown> makeEnumerator(std::vector<ComPtr<IDispatch>> items) {
    return ComPtr<IUnknown>::adopt(new EnumVariant(std::make_shared<const Items>(std::move(items)), 0));
}

}  // namespace Corvane::Com
