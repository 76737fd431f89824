#include "com/runtime/dispatch.h"

#include "com/runtime/automation.h"
#include "com/runtime/module.h"
#include "core/lock.h"

#include <VetrelCorvane2_h.h>

#include <algorithm>
#include <bit>
#include <map>
#include <mutex>
#include <shared_mutex>

namespace Corvane::Com {

// What the type library's source says of a member, getter and setter of a property being one.
struct MemberDescription {
    std::wstring_view name;  // in lower case
    DISPID id;
    WORD kinds;              // of INVOKEKIND
    std::size_t getterSlot;  // in the table of methods, 0 where reading has to go the general way
    VARTYPE type;            // of the plain value that the getter gives
};

namespace {

struct InterfaceDescription {
    const IID& iid;
    std::span<const MemberDescription> members;
};

#include <methods/members.h>

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
        const auto* const description = std::ranges::find_if(
            interfaceDescriptions, [&](const InterfaceDescription& each) { return each.iid == iid; });
        if (description == std::end(interfaceDescriptions))
            return TYPE_E_ELEMENTNOTFOUND;
        const std::lock_guard guard(cacheMutex);
        const DispatchTable*& entry = lockedCache().tables[iid];
        if (!entry)
            entry = new DispatchTable(iid, description->members);
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

DispatchTable::DispatchTable(const IID& iid, std::span<const MemberDescription> members)
    : iid_(iid), members_(members) {
    // At most half full, so that a name that is not there is found out soon.
    byName_.assign(std::bit_ceil(members.size() * 2 + 1), 0);
    for (const MemberDescription& member : members) {
        byId_.emplace(member.id, &member);
        std::size_t hash = 0;
        for (const OLECHAR c : member.name)
            hash = hashStep(hash, c);
        std::size_t slot = hash & (byName_.size() - 1);
        while (byName_[slot] != 0)
            slot = (slot + 1) & (byName_.size() - 1);
        byName_[slot] = static_cast<unsigned short>(&member - members.data() + 1);
    }
}

DispatchTable::~DispatchTable() {
    if (ITypeInfo* const info = typeInfo_.load(std::memory_order_acquire))
        info->Release();
}

HRESULT DispatchTable::typeInfo(ITypeInfo*& info) const noexcept {
    info = typeInfo_.load(std::memory_order_acquire);
    if (info)
        return S_OK;
    try {
        const std::lock_guard guard(cacheMutex);
        ComPtr<ITypeInfo> loaded;
        if (const HRESULT hr = lockedTypeInfo(iid_, loaded); FAILED(hr))
            return hr;
        info = typeInfo_.load(std::memory_order_relaxed);
        if (!info)
            typeInfo_.store(info = loaded.detach(), std::memory_order_release);
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

const MemberDescription* DispatchTable::find(const OLECHAR* name) const noexcept {
    std::size_t hash = 0;
    const OLECHAR* end = name;
    for (; *end; ++end)
        hash = hashStep(hash, folded(*end));
    const auto length = static_cast<std::size_t>(end - name);
    const auto same = [](OLECHAR left, OLECHAR right) { return left == folded(right); };
    for (std::size_t slot = hash & (byName_.size() - 1); byName_[slot] != 0;
         slot = (slot + 1) & (byName_.size() - 1)) {
        const MemberDescription& candidate = members_[byName_[slot] - 1u];
        if (candidate.name.size() == length &&
            std::equal(candidate.name.begin(), candidate.name.end(), name, same))
            return &candidate;
    }
    return nullptr;
}

const MemberDescription* DispatchTable::find(DISPID id) const noexcept {
    const auto found = byId_.find(id);
    return found == byId_.end() ? nullptr : found->second;
}

HRESULT DispatchTable::getIdsOfNames(LPOLESTR* names, UINT count, DISPID* ids) const noexcept {
    if (!names || !ids || count == 0)
        return E_INVALIDARG;
    const MemberDescription* const member = find(names[0]);
    if (!member) {
        std::fill_n(ids, count, DISPID_UNKNOWN);
        return DISP_E_UNKNOWNNAME;
    }
    ids[0] = member->id;
    if (count == 1)
        return S_OK;
    // Names of arguments, which scripts hardly ever use.
    ITypeInfo* info = nullptr;
    const HRESULT hr = typeInfo(info);
    return FAILED(hr) ? hr : info->GetIDsOfNames(names, count, ids);
}

HRESULT DispatchTable::invoke(void* object, DISPID id, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                              EXCEPINFO* exception, UINT* badArgument) const noexcept {
    const MemberDescription* const member = find(id);
    if (!member)
        return DISP_E_MEMBERNOTFOUND;
    // Engines read a property as a method in places: a read that stands as a statement, an enumerator. Not
    // the other way round: a script that looks whether there is a method must not call it.
    if (flags == DISPATCH_METHOD && (member->kinds & INVOKE_PROPERTYGET) != 0)
        flags |= DISPATCH_PROPERTYGET;
    // The system's releases differ in how they refuse to set what can only be read.
    static_assert(INVOKE_FUNC == DISPATCH_METHOD && INVOKE_PROPERTYPUT == DISPATCH_PROPERTYPUT);
    if ((flags & member->kinds) == 0)
        return DISP_E_MEMBERNOTFOUND;
    const bool plainRead = member->getterSlot != 0 && (flags & DISPATCH_PROPERTYGET) != 0 && result &&
                           parameters && parameters->cArgs == 0;
    ITypeInfo* info = nullptr;
    if (!plainRead) {
        if (const HRESULT hr = typeInfo(info); FAILED(hr))
            return hr;
    }
    EarlierErrorInfo earlier;
    const HRESULT hr = plainRead
                           ? readPlain(object, member->getterSlot, member->type, *result, exception)
                           : info->Invoke(object, id, flags, parameters, result, exception, badArgument);
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
