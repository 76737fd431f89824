// Late binding: names, identifiers and calls of one dual interface, from the type library that the DLL
// carries. Nothing is looked up in the registry, so objects also work without registration.
#pragma once

#include "com/runtime/ptr.h"

#include <windows.h>

#include <oleauto.h>

#include <atomic>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Corvane::Com {

// What one interface answers to IDispatch. Built once for the process and shared by all objects of the
// class, which hold references to it. Immutable, so any thread may use it.
class DispatchTable {
public:
    // The table of an interface of the type library; the caller owns the reference. A failure is the
    // HRESULT of the type library's loading.
    static HRESULT acquire(const IID& iid, const DispatchTable** table) noexcept;

    // Forgets the tables that no object holds. For when the module is about to be unloaded.
    static void forgetAll() noexcept;

    void addRef() const noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
    void release() const noexcept {
        if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }

    ITypeInfo* typeInfo() const noexcept { return typeInfo_.get(); }

    HRESULT getIdsOfNames(LPOLESTR* names, UINT count, DISPID* ids) const noexcept;

    // Calls a member of `object`, which implements the interface of this table.
    HRESULT invoke(void* object, DISPID id, WORD flags, DISPPARAMS* parameters, VARIANT* result,
                   EXCEPINFO* exception, UINT* badArgument) const noexcept;

private:
    struct Name {
        std::wstring_view text;  // folded
        DISPID id;
    };

    explicit DispatchTable(ComPtr<ITypeInfo> typeInfo);
    ~DispatchTable() = default;

    // What is known of a member by its identifier.
    struct Member {
        WORD kinds = 0;              // of INVOKEKIND
        std::size_t getterSlot = 0;  // in the table of methods, 0 where reading has to go the general way
        VARTYPE type = VT_EMPTY;     // of the plain value that the getter gives
    };

    void addFunction(UINT index);
    void addGetters();
    void addName(BSTR name, DISPID id);
    void buildIndex();
    const Member& memberOf(DISPID id) const noexcept;
    const Name* find(const OLECHAR* name) const noexcept;

    ComPtr<ITypeInfo> typeInfo_;
    std::vector<std::wstring> texts_;
    std::vector<Name> names_;
    std::vector<unsigned short> buckets_;  // 1 + index into names_, 0 where there is none
    std::unordered_map<DISPID, Member> members_;
    mutable std::atomic<long> references_{1};
};

// The description of a class or an interface in the embedded type library.
HRESULT typeInfoOf(const GUID& guid, ITypeInfo** typeInfo) noexcept;

}  // namespace Corvane::Com
