#include "com/runtime/dispatch.h"

#include "com/runtime/automation.h"
#include "com/runtime/module.h"
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
    HRESULT hr = S_OK;
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
    const FUNCDESC& operator*() const noexcept { return *description_; }

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

bool isPlain(VARTYPE type) noexcept {
    switch (type) {
        case VT_I4:
        case VT_INT:
        case VT_UI4:
        case VT_UINT:
        case VT_BOOL:
        case VT_BSTR:
        case VT_DATE:
            return true;
        default:
            return false;
    }
}

// The type of what a getter without arguments stores through its only parameter; VT_EMPTY for any other
// function.
VARTYPE plainTypeOf(const FUNCDESC& function) noexcept {
    if (function.invkind != INVOKE_PROPERTYGET || function.funckind != FUNC_PUREVIRTUAL ||
        function.cParams != 1)
        return VT_EMPTY;
    const TYPEDESC& parameter = function.lprgelemdescParam[0].tdesc;
    return parameter.vt == VT_PTR && isPlain(parameter.lptdesc->vt) ? parameter.lptdesc->vt
                                                                    : VARTYPE{VT_EMPTY};
}

// What ITypeInfo::Invoke makes of a member's failure.
HRESULT toException(HRESULT hr, EXCEPINFO* exception) noexcept {
    if (exception) {
        *exception = EXCEPINFO{};
        exception->scode = hr;
        ComPtr<IErrorInfo> info;
        if (::GetErrorInfo(0, info.put()) == S_OK) {
            info->GetSource(&exception->bstrSource);
            info->GetDescription(&exception->bstrDescription);
        }
    }
    return DISP_E_EXCEPTION;
}

// Puts the thread's error information aside for the time of a call: a member may fail without any, and its
// caller must not get that of an earlier failure.
class EarlierErrorInfo {
public:
    EarlierErrorInfo() noexcept { ::GetErrorInfo(0, info_.put()); }

    // Puts it back, unless the call has left its own.
    void restore() noexcept {
        if (!info_)
            return;
        ComPtr<IErrorInfo> left;
        ::GetErrorInfo(0, left.put());
        ::SetErrorInfo(0, left ? left.get() : info_.get());
    }

private:
    ComPtr<IErrorInfo> info_;
};

// Whether the error information of the member that failed has gone into the exception.
bool describes(const EXCEPINFO* exception) noexcept {
    return exception && (exception->bstrDescription || exception->bstrSource);
}

// Reads a property through its slot. By far the most frequent call, and a fraction of the general one.
HRESULT readPlain(void* object, std::size_t slot, VARTYPE type, VARIANT& result,
                  EXCEPINFO* exception) noexcept {
    using Getter = HRESULT(STDMETHODCALLTYPE*)(void*, void*);
    const Getter* const slots = *static_cast<const Getter**>(object);
    VARIANT value;
    ::VariantInit(&value);
    V_I8(&value) = 0;
    if (const HRESULT hr = slots[slot](object, &V_I8(&value)); FAILED(hr))
        return toException(hr, exception);
    V_VT(&value) = type;
    result = value;
    return S_OK;
}

}  // namespace

HRESULT DispatchTable::acquire(const IID& iid, const DispatchTable** table) noexcept {
    try {
        {
            const std::shared_lock guard(cacheMutex);
            if (cache) {
                if (const auto found = cache->tables.find(iid);
                    found != cache->tables.end() && found->second) {
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
    addGetters();
    buildIndex();
}

void DispatchTable::addFunction(UINT index) {
    const FunctionDescription function(*typeInfo_, index);
    if (!function)
        return;
    members_[function->memid].kinds |= static_cast<WORD>(function->invkind);
    Bstr name;
    UINT written = 0;
    if (SUCCEEDED(typeInfo_->GetNames(function->memid, name.put(), 1, &written)) && written == 1)
        addName(name.get(), function->memid);
}

// The slots stand in the other view of a dual interface, the one of its table of methods.
void DispatchTable::addGetters() {
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> methods;
    if (FAILED(typeInfo_->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference)) ||
        FAILED(typeInfo_->GetRefTypeInfo(reference, methods.put())))
        return;
    const UINT count = functionCount(*methods);
    for (UINT index = 0; index < count; ++index) {
        const FunctionDescription function(*methods, index);
        const VARTYPE type = function ? plainTypeOf(*function) : VARTYPE{VT_EMPTY};
        if (type == VT_EMPTY)
            continue;
        Member& member = members_[function->memid];
        member.getterSlot = static_cast<std::size_t>(function->oVft) / sizeof(void*);
        member.type = type;
    }
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

const DispatchTable::Member& DispatchTable::memberOf(DISPID id) const noexcept {
    static constexpr Member unknown{};
    const auto found = members_.find(id);
    return found == members_.end() ? unknown : found->second;
}

HRESULT DispatchTable::invoke(void* object, DISPID id, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                              EXCEPINFO* exception, UINT* badArgument) const noexcept {
    const Member& member = memberOf(id);
    // Engines read a property as a method in places: a read that stands as a statement, an enumerator. Not
    // the other way round: a script that looks whether there is a method must not call it.
    if (flags == DISPATCH_METHOD && (member.kinds & INVOKE_PROPERTYGET) != 0)
        flags |= DISPATCH_PROPERTYGET;
    // The system's releases differ in how they refuse to set what can only be read.
    static_assert(INVOKE_FUNC == DISPATCH_METHOD && INVOKE_PROPERTYPUT == DISPATCH_PROPERTYPUT);
    if ((flags & member.kinds) == 0)
        return DISP_E_MEMBERNOTFOUND;
    EarlierErrorInfo earlier;
    const bool plainRead = member.getterSlot != 0 && (flags & DISPATCH_PROPERTYGET) != 0 && result &&
                           parameters && parameters->cArgs == 0;
    const HRESULT hr = plainRead
                           ? readPlain(object, member.getterSlot, member.type, *result, exception)
                           : typeInfo_->Invoke(object, id, flags, parameters, result, exception, badArgument);
    if (hr != DISP_E_EXCEPTION || !describes(exception))
        earlier.restore();
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
