#include "arguments.h"

#include <memory>

namespace ScriptHost {
namespace {

using Words = std::shared_ptr<const std::vector<std::wstring>>;

class WordEnumerator final : public PlainObject<IEnumVARIANT> {
public:
    WordEnumerator(Words words, std::size_t position) : words_(std::move(words)), position_(position) {}

    HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* values, ULONG* fetched) override {
        ULONG done = 0;
        for (; done < count && position_ < words_->size(); ++done)
            setText(values[done], (*words_)[position_++]);
        if (fetched)
            *fetched = done;
        return done == count ? S_OK : S_FALSE;
    }

    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
        const bool enough = count <= words_->size() - position_;
        position_ = enough ? position_ + count : words_->size();
        return enough ? S_OK : S_FALSE;
    }

    HRESULT STDMETHODCALLTYPE Reset() override {
        position_ = 0;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** copy) override {
        *copy = makeObject<WordEnumerator>(words_, position_).detach();
        return S_OK;
    }

private:
    Words words_;
    std::size_t position_;
};

}  // namespace

Arguments::Arguments(std::vector<std::wstring> words) {
    const Words shared = std::make_shared<std::vector<std::wstring>>(std::move(words));
    const auto item = [shared](const CallArguments& arguments, VARIANT& result) {
        const long index = arguments.number(0);
        if (index < 0 || static_cast<std::size_t>(index) >= shared->size())
            throw CallError{DISP_E_BADINDEX, L"There is no such argument"};
        setText(result, (*shared)[static_cast<std::size_t>(index)]);
    };
    const auto count = [shared](VARIANT& result) { setNumber(result, static_cast<long>(shared->size())); };

    addDefault(item);
    addMethod(L"Item", item);
    addProperty(L"length", count);
    addMethod(L"Count", [count](const CallArguments&, VARIANT& result) { count(result); });
    addEnumerator([shared](VARIANT& result) {
        result.punkVal = makeObject<WordEnumerator>(shared, 0U).detach();
        result.vt = VT_UNKNOWN;
    });
}

}  // namespace ScriptHost
