#include "com/dispatch.h"

#include "com/automation.h"
#include "com/module.h"
#include "core/lock.h"

#include <algorithm>
#include <bit>
#include <map>
#include <mutex>
#include <shared_mutex>

namespace Corvane::Com {
namespace {

struct GuidLess {
    bool operator()(const GUID& left, const GUID& right) const noexcept {
        return std::memcmp(&left, &right, sizeof(GUID)) < 0;
    }
};

// Allocated when first needed and freed by forgetAll(), never by a static destructor: those run under the
// loader lock, where releasing a type library is not safe.
struct Cache {
    ComPtr<ITypeLib> library;
    std::map<GUID, const DispatchTable*, GuidLess> tables;
};

SharedMutex cacheMutex;
Cache* cache = nullptr;

Cache& lockedCache() {
    if (!cache)
        cache = new Cache;
    return *cache;
}

ITypeLib* lockedLibrary(HRESULT& hr) {
    Cache& all = lockedCache();
    hr = S_OK;
    if (!all.library)
        hr = ::LoadTypeLibEx(Module::path().c_str(), REGKIND_NONE, all.library.put());
    return all.library.get();
}

HRESULT lockedTypeInfo(const GUID& guid, ComPtr<ITypeInfo>& info) {
    HRESULT hr;
    ITypeLib* library = lockedLibrary(hr);
    return FAILED(hr) ? hr : library->GetTypeInfoOfGuid(guid, info.put());
}

// Names of members are ASCII and compared without regard to case.
constexpr OLECHAR folded(OLECHAR c) noexcept {
    return c >= L'A' && c <= L'Z' ? static_cast<OLECHAR>(c + (L'a' - L'A')) : c;
}

constexpr std::size_t hashStep(std::size_t hash, OLECHAR c) noexcept {
    return (hash ^ c) * 16777619u;
}

class FunctionDescription {
public:
    FunctionDescription(ITypeInfo& info, UINT index) noexcept : info_(info) {
        if (FAILED(info.GetFuncDesc(index, &description_)))
            description_ = nullptr;
    }
    FunctionDescription(const FunctionDescription&) = delete;
    FunctionDescription& operator=(const FunctionDescription&) = delete;
    ~FunctionDescription() {
        if (description_)
            info_.ReleaseFuncDesc(description_);
    }

    explicit operator bool() const noexcept { return description_ != nullptr; }
    const FUNCDESC* operator->() const noexcept { return description_; }

private:
    ITypeInfo& info_;
    FUNCDESC* description_ = nullptr;
};

UINT functionCount(ITypeInfo& info) noexcept {
    TYPEATTR* attributes = nullptr;
    if (FAILED(info.GetTypeAttr(&attributes)))
        return 0;
    const UINT count = attributes->cFuncs;
    info.ReleaseTypeAttr(attributes);
    return count;
}

}  // namespace

HRESULT DispatchTable::acquire(const IID& iid, const DispatchTable** table) noexcept {
    try {
        {
            const std::shared_lock guard(cacheMutex);
            if (cache) {
                if (const auto found = cache->tables.find(iid); found != cache->tables.end()) {
                    found->second->addRef();
                    *table = found->second;
                    return S_OK;
                }
            }
        }
        const std::lock_guard guard(cacheMutex);
        const DispatchTable*& entry = lockedCache().tables[iid];
        if (!entry) {
            ComPtr<ITypeInfo> info;
            if (const HRESULT hr = lockedTypeInfo(iid, info); FAILED(hr))
                return hr;
            entry = new DispatchTable(std::move(info));
        }
        entry->addRef();
        *table = entry;
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

void DispatchTable::forgetAll() noexcept {
    const std::lock_guard guard(cacheMutex);
    if (!cache)
        return;
    for (const auto& [iid, table] : cache->tables) {
        if (table)
            table->release();
    }
    delete std::exchange(cache, nullptr);
}

DispatchTable::DispatchTable(ComPtr<ITypeInfo> typeInfo) : typeInfo_(std::move(typeInfo)) {
    const UINT count = functionCount(*typeInfo_);
    for (UINT index = 0; index < count; ++index)
        addFunction(index);
    buildIndex();
}

void DispatchTable::addFunction(UINT index) {
    const FunctionDescription function(*typeInfo_.get(), index);
    if (!function)
        return;
    kinds_[function->memid] |= static_cast<WORD>(function->invkind);
    Bstr name;
    UINT written = 0;
    if (SUCCEEDED(typeInfo_->GetNames(function->memid, name.put(), 1, &written)) && written == 1)
        addName(name.get(), function->memid);
}

void DispatchTable::addName(BSTR name, DISPID id) {
    std::wstring text(viewOf(name));
    std::transform(text.begin(), text.end(), text.begin(), folded);
    const auto known = [&](const Name& other) { return other.id == id; };
    if (std::any_of(names_.begin(), names_.end(), known))
        return;  // getter and setter of one property
    texts_.push_back(std::move(text));
    names_.push_back({{}, id});
}

void DispatchTable::buildIndex() {
    // At most half full, so that a name that is not there is found out soon.
    buckets_.assign(std::bit_ceil(names_.size() * 2 + 1), 0);
    for (std::size_t i = 0; i < names_.size(); ++i) {
        names_[i].text = texts_[i];
        std::size_t hash = 0;
        for (const OLECHAR c : texts_[i])
            hash = hashStep(hash, c);
        std::size_t slot = hash & (buckets_.size() - 1);
        while (buckets_[slot] != 0)
            slot = (slot + 1) & (buckets_.size() - 1);
        buckets_[slot] = static_cast<unsigned short>(i + 1);
    }
}

const DispatchTable::Name* DispatchTable::find(const OLECHAR* name) const noexcept {
    std::size_t hash = 0;
    const OLECHAR* end = name;
    for (; *end; ++end)
        hash = hashStep(hash, folded(*end));
    const auto length = static_cast<std::size_t>(end - name);
    const auto same = [](OLECHAR left, OLECHAR right) { return left == folded(right); };
    for (std::size_t slot = hash & (buckets_.size() - 1); buckets_[slot] != 0;
         slot = (slot + 1) & (buckets_.size() - 1)) {
        const Name& candidate = names_[buckets_[slot] - 1u];
        if (candidate.text.size() == length &&
            std::equal(candidate.text.begin(), candidate.text.end(), name, same))
            return &candidate;
    }
    return nullptr;
}

HRESULT DispatchTable::getIdsOfNames(LPOLESTR* names, UINT count, DISPID* ids) const noexcept {
    if (!names || !ids || count == 0)
        return E_INVALIDARG;
    const Name* name = find(names[0]);
    if (!name) {
        std::fill_n(ids, count, DISPID_UNKNOWN);
        return DISP_E_UNKNOWNNAME;
    }
    if (count > 1)  // names of arguments, which scripts hardly ever use
        return typeInfo_->GetIDsOfNames(names, count, ids);
    ids[0] = name->id;
    return S_OK;
}

bool DispatchTable::isGetter(DISPID member) const noexcept {
    const auto kind = kinds_.find(member);
    return kind != kinds_.end() && (kind->second & INVOKE_PROPERTYGET) != 0;
}

bool DispatchTable::isMethod(DISPID member) const noexcept {
    const auto kind = kinds_.find(member);
    return kind != kinds_.end() && (kind->second & INVOKE_FUNC) != 0;
}

HRESULT DispatchTable::invoke(void* object, DISPID member, WORD flags, DISPPARAMS* parameters,
                              VARIANT* result, EXCEPINFO* exception, UINT* badArgument) const noexcept {
    // Engines read a property as a method in places (a read that stands as a statement, an enumerator),
    // and authors write a method without arguments as if it were a property.
    if (flags == DISPATCH_METHOD && isGetter(member))
        flags |= DISPATCH_PROPERTYGET;
    else if (flags == DISPATCH_PROPERTYGET && isMethod(member))
        flags |= DISPATCH_METHOD;
    // A method may fail without error information; the caller must not get that of an earlier failure.
    ::SetErrorInfo(0, nullptr);
    const HRESULT hr = typeInfo_->Invoke(object, member, flags, parameters, result, exception, badArgument);
    if (SUCCEEDED(hr) && result)
        makeScriptNumber(*result);
    return hr;
}

HRESULT typeInfoOf(const GUID& guid, ITypeInfo** typeInfo) noexcept {
    try {
        const std::lock_guard guard(cacheMutex);
        ComPtr<ITypeInfo> info;
        const HRESULT hr = lockedTypeInfo(guid, info);
        if (SUCCEEDED(hr))
            *typeInfo = info.detach();
        return hr;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace Corvane::Com
