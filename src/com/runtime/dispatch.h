// Late binding: names, identifiers and calls of one dual interface, from the type library that the DLL
// carries and from its source. Nothing is looked up in the registry, so objects also work without
// registration.
#pragma once

#include "com/runtime/ptr.h"

#include <windows.h>

#include <oleauto.h>

#include <atomic>
#include <cstring>
#include <span>
#include <unordered_map>
#include <vector>

namespace Corvane::Com {

struct MemberDescription;

// What one interface answers to IDispatch. Names, identifiers and the getters of plain values are known from
// the type library's source; the type library itself, which takes long to load, is asked at the first call
// that needs it. Built once for the process and shared by all objects of the class, which hold references to
// it. Any thread may use it.
class DispatchTable {
public:
    // The table of an interface of the type library; the caller owns the reference.
    static HRESULT acquire(const IID& iid, const DispatchTable** table) noexcept;

    // Forgets the tables that no object holds. For when the module is about to be unloaded.
    static void forgetAll() noexcept;

    void addRef() const noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
    void release() const noexcept {
        if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }

    // The interface's description, which stays the table's own; a failure is that of loading the type
    // library.
    HRESULT typeInfo(ITypeInfo*& info) const noexcept;

    HRESULT getIdsOfNames(LPOLESTR* names, UINT count, DISPID* ids) const noexcept;

    // Calls a member of `object`, which implements the interface of this table.
    HRESULT invoke(void* object, DISPID id, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                   EXCEPINFO* exception, UINT* badArgument) const noexcept;

private:
    DispatchTable(const IID& iid, std::span<const MemberDescription> members);
    ~DispatchTable();

    const MemberDescription* find(const OLECHAR* name) const noexcept;
    const MemberDescription* find(DISPID id) const noexcept;

    const IID iid_;
    const std::span<const MemberDescription> members_;
    std::vector<unsigned short> byName_;  // 1 + index into members_, 0 where there is none
    std::unordered_map<DISPID, const MemberDescription*> byId_;
    mutable std::atomic<ITypeInfo*> typeInfo_{nullptr};
    mutable std::atomic<long> references_{1};
};

// The description of a class or an interface in the embedded type library.
HRESULT typeInfoOf(const GUID& guid, ITypeInfo** typeInfo) noexcept;

}  // namespace Corvane::Com
