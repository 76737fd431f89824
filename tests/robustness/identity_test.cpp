// The rules of COM that every coclass of the type library has to keep.
#include "component.h"

#include <objsafe.h>

#include <functional>
#include <vector>

namespace robustness {
namespace {

struct ClassDescription {
    std::wstring name;
    CLSID clsid;
    IID defaultInterface;
};

ComPtr<ITypeInfo> defaultInterfaceOf(ITypeInfo& coclass) {
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> interfaceInfo;
    if (SUCCEEDED(coclass.GetRefTypeOfImplType(0, &reference)))
        coclass.GetRefTypeInfo(reference, interfaceInfo.put());
    return interfaceInfo;
}

GUID guidOf(ITypeInfo& info) {
    TYPEATTR* attributes = nullptr;
    if (FAILED(info.GetTypeAttr(&attributes)))
        return GUID_NULL;
    const GUID guid = attributes->guid;
    info.ReleaseTypeAttr(attributes);
    return guid;
}

// All coclasses that the DLL's own type library names.
std::vector<ClassDescription> coclassesOfLibrary() {
    ComPtr<ITypeLib> library;
    EXPECT_EQ(::LoadTypeLibEx(componentPath().c_str(), REGKIND_NONE, library.put()), S_OK);
    std::vector<ClassDescription> all;
    for (UINT i = 0; library && i < library->GetTypeInfoCount(); ++i) {
        TYPEKIND kind = TKIND_MAX;
        ComPtr<ITypeInfo> info;
        Bstr name;
        library->GetTypeInfoType(i, &kind);
        if (kind != TKIND_COCLASS || FAILED(library->GetTypeInfo(i, info.put())))
            continue;
        library->GetDocumentation(static_cast<INT>(i), name.put(), nullptr, nullptr, nullptr);
        const auto interfaceInfo = defaultInterfaceOf(*info);
        all.push_back(
            {std::wstring(name.view()), guidOf(*info), interfaceInfo ? guidOf(*interfaceInfo) : GUID_NULL});
    }
    return all;
}

class IdentityTest : public ComponentTest {
protected:
    // Runs the check for a new object of each coclass.
    void forEach(const std::function<void(const ClassDescription&, IUnknown&)>& check) const {
        const auto all = coclassesOfLibrary();
        ASSERT_GE(all.size(), 3U);
        for (const ClassDescription& description : all) {
            SCOPED_TRACE(::testing::Message() << description.name.c_str());
            const auto object = component_.create<IUnknown>(description.clsid);
            ASSERT_TRUE(object);
            check(description, *object);
        }
    }
};

ComPtr<IUnknown> ask(IUnknown& object, REFIID iid) {
    ComPtr<IUnknown> answer;
    object.QueryInterface(iid, answer.putVoid());
    return answer;
}

TEST_F(IdentityTest, EveryInterfaceLeadsToEveryOther) {
    forEach([](const ClassDescription& description, IUnknown& object) {
        const IID offered[] = {IID_IUnknown,      IID_IDispatch,         description.defaultInterface,
                               IID_IObjectSafety, IID_ISupportErrorInfo, IID_IProvideClassInfo};
        for (const IID& from : offered) {
            const auto first = ask(object, from);
            ASSERT_TRUE(first);
            for (const IID& to : offered)
                EXPECT_TRUE(ask(*first.get(), to));
            // One object has one IUnknown, whichever way it is asked for.
            EXPECT_EQ(ask(*first.get(), IID_IUnknown).get(), &object);
        }
    });
}

TEST_F(IdentityTest, AnInterfaceThatIsNotOfferedGivesNull) {
    forEach([](const ClassDescription&, IUnknown& object) {
        for (const IID& iid :
             {IID_IMarshal, IID_IPersist, IID_IClassFactory, IID_IConnectionPointContainer}) {
            void* answer = &object;
            EXPECT_EQ(object.QueryInterface(iid, &answer), E_NOINTERFACE);
            EXPECT_EQ(answer, nullptr);
        }
        EXPECT_EQ(object.QueryInterface(IID_IUnknown, nullptr), E_POINTER);
        EXPECT_EQ(referencesOf(object), 1U);
    });
}

TEST_F(IdentityTest, OnlyServicesTakeASite) {
    forEach([](const ClassDescription& description, IUnknown& object) {
        const bool isService = description.name.find(L"Service") != std::wstring::npos ||
                               description.name == L"About" || description.name == L"CertificateStore";
        EXPECT_EQ(static_cast<bool>(ask(object, IID_IObjectWithSite)), isService);
    });
}

TEST_F(IdentityTest, FactoriesRefuseAggregation) {
    forEach([this](const ClassDescription& description, IUnknown& object) {
        const auto factory = component_.factory(description.clsid);
        void* made = &object;
        EXPECT_EQ(factory->CreateInstance(&object, IID_IUnknown, &made), CLASS_E_NOAGGREGATION);
        EXPECT_EQ(made, nullptr);
        made = &object;
        EXPECT_EQ(factory->CreateInstance(nullptr, IID_IMarshal, &made), E_NOINTERFACE);
        EXPECT_EQ(made, nullptr);
        EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    });
}

TEST_F(IdentityTest, SafeForScriptsAndTheirData) {
    static constexpr DWORD both = INTERFACESAFE_FOR_UNTRUSTED_CALLER | INTERFACESAFE_FOR_UNTRUSTED_DATA;
    forEach([](const ClassDescription&, IUnknown& object) {
        ComPtr<IObjectSafety> safety;  // MinGW's header has no __uuidof for it
        ASSERT_EQ(object.QueryInterface(IID_IObjectSafety, safety.putVoid()), S_OK);
        DWORD supported = 0;
        DWORD enabled = 0;
        EXPECT_EQ(safety->GetInterfaceSafetyOptions(IID_IDispatch, &supported, &enabled), S_OK);
        EXPECT_EQ(supported, both);
        EXPECT_EQ(safety->SetInterfaceSafetyOptions(IID_IDispatch, both, both), S_OK);
        EXPECT_EQ(safety->SetInterfaceSafetyOptions(IID_IDispatch, 0x80, 0x80), E_FAIL);
        EXPECT_EQ(safety->GetInterfaceSafetyOptions(IID_IPersist, &supported, &enabled), E_NOINTERFACE);
        EXPECT_EQ(safety->SetInterfaceSafetyOptions(IID_IPersist, both, both), E_NOINTERFACE);
    });
}

TEST_F(IdentityTest, DescribesItselfAndItsErrors) {
    forEach([](const ClassDescription& description, IUnknown& object) {
        const auto errors = ComPtr<IUnknown>(&object).query<ISupportErrorInfo>();
        EXPECT_EQ(errors->InterfaceSupportsErrorInfo(description.defaultInterface), S_OK);
        EXPECT_EQ(errors->InterfaceSupportsErrorInfo(IID_IObjectSafety), S_FALSE);

        ComPtr<ITypeInfo> classInfo;
        EXPECT_EQ(ComPtr<IUnknown>(&object).query<IProvideClassInfo>()->GetClassInfo(classInfo.put()), S_OK);
        EXPECT_EQ(guidOf(*classInfo.get()), description.clsid);

        const auto dispatch = ComPtr<IUnknown>(&object).query<IDispatch>();
        UINT count = 0;
        EXPECT_EQ(dispatch->GetTypeInfoCount(&count), S_OK);
        EXPECT_EQ(count, 1U);
        ComPtr<ITypeInfo> info;
        EXPECT_EQ(dispatch->GetTypeInfo(1, LOCALE_USER_DEFAULT, info.put()), DISP_E_BADINDEX);
        EXPECT_EQ(dispatch->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.put()), S_OK);
        EXPECT_EQ(guidOf(*info.get()), description.defaultInterface);
    });
}

TEST_F(ComponentTest, ClassObjectsOfUnknownClassesAndInterfaces) {
    void* object = this;
    EXPECT_EQ(component_.classObject(IID_IPersist, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    object = this;
    EXPECT_EQ(component_.classObject(__uuidof(About), IID_IDispatch, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(component_.classObject(__uuidof(About), IID_IClassFactory, nullptr), E_POINTER);
}

}  // namespace
}  // namespace robustness
