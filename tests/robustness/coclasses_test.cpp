// What holds of every coclass of the type library: the rules of COM, and that no page uses a service
// untrusted.
#include "component.h"

#include <objsafe.h>

#include <functional>

namespace robustness {
namespace {

GUID guidOf(ITypeInfo& info) {
    TYPEATTR* attributes = nullptr;
    if (FAILED(info.GetTypeAttr(&attributes)))
        return GUID_NULL;
    const GUID guid = attributes->guid;
    info.ReleaseTypeAttr(attributes);
    return guid;
}

ComPtr<IUnknown> ask(IUnknown& object, REFIID iid) {
    ComPtr<IUnknown> answer;
    object.QueryInterface(iid, answer.putVoid());
    return answer;
}

// A class, its default interface as scripts see it, and a new object of it.
struct Made {
    std::wstring name;
    CLSID clsid;
    ComPtr<ITypeInfo> defaultInterface;
    ComPtr<IDispatch> object;

    bool isService() const {
        return name.ends_with(L"Service") || name == L"CertificateStore" || name == L"CryptoProvider";
    }
    // Those that ask whose page they are in, or whose results do.
    bool hasSite() const {
        return isService() || name == L"About" || name == L"BinaryObject" || name == L"BinaryStream" ||
               name == L"FileObject";
    }
    // Runs the check for each member that is not IUnknown's or IDispatch's own.
    void forEachMember(const std::function<void(const FUNCDESC&)>& check) const {
        FUNCDESC* function = nullptr;
        for (UINT i = 0; defaultInterface->GetFuncDesc(i, &function) == S_OK; ++i) {
            SCOPED_TRACE(function->memid);
            if (function->memid < 0x60000000)
                check(*function);
            defaultInterface->ReleaseFuncDesc(function);
        }
    }
};

class CoclassesTest : public ComponentTest {
protected:
    // Runs the check for each coclass that the DLL's own type library names.
    void forEach(const std::function<void(const Made&)>& check) const {
        ComPtr<ITypeLib> library;
        ASSERT_EQ(::LoadTypeLibEx(componentPath().c_str(), REGKIND_NONE, library.put()), S_OK);
        ASSERT_GT(library->GetTypeInfoCount(), 0U);
        for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
            TYPEKIND kind = TKIND_MAX;
            library->GetTypeInfoType(i, &kind);
            if (kind != TKIND_COCLASS)
                continue;
            ComPtr<ITypeInfo> info;
            Bstr name;
            HREFTYPE reference = 0;
            ASSERT_EQ(library->GetTypeInfo(i, info.put()), S_OK);
            library->GetDocumentation(static_cast<INT>(i), name.put(), nullptr, nullptr, nullptr);
            Made made{std::wstring(name.view()), guidOf(*info), {}, {}};
            ASSERT_EQ(info->GetRefTypeOfImplType(0, &reference), S_OK);
            ASSERT_EQ(info->GetRefTypeInfo(reference, made.defaultInterface.put()), S_OK);
            SCOPED_TRACE(::testing::PrintToString(made.name));
            made.object = component_.create<IDispatch>(made.clsid);
            ASSERT_TRUE(made.object);
            check(made);
            EXPECT_EQ(referencesOf(*made.object), 1U);
        }
    }
};

TEST_F(CoclassesTest, EveryInterfaceLeadsToEveryOther) {
    forEach([](const Made& made) {
        const auto identity = ask(*made.object, IID_IUnknown);
        const IID offered[] = {IID_IUnknown,      IID_IDispatch,         guidOf(*made.defaultInterface),
                               IID_IObjectSafety, IID_ISupportErrorInfo, IID_IProvideClassInfo};
        for (const IID& from : offered) {
            const auto first = ask(*made.object, from);
            ASSERT_TRUE(first);
            for (const IID& to : offered)
                EXPECT_TRUE(ask(*first, to));
            // One object has one IUnknown, whichever way it is asked for.
            EXPECT_EQ(ask(*first, IID_IUnknown).get(), identity.get());
        }
        for (const IID& iid : {IID_IMarshal, IID_IPersist, IID_IClassFactory}) {
            void* answer = made.object.get();
            EXPECT_EQ(made.object->QueryInterface(iid, &answer), E_NOINTERFACE);
            EXPECT_EQ(answer, nullptr);
        }
        EXPECT_EQ(made.object->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
        EXPECT_EQ(static_cast<bool>(ask(*made.object, IID_IObjectWithSite)), made.hasSite());
    });
}

TEST_F(CoclassesTest, FactoriesGiveWhatIsAskedForOrNothing) {
    void* answer = this;
    const auto refused = [&](HRESULT hr) {
        EXPECT_EQ(std::exchange(answer, this), nullptr);
        return hr;
    };
    const auto factory = component_.factory(__uuidof(BinaryObject));
    EXPECT_EQ(refused(factory->CreateInstance(factory.get(), IID_IUnknown, &answer)), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(refused(factory->CreateInstance(nullptr, IID_IMarshal, &answer)), E_NOINTERFACE);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(refused(component_.classObject(IID_IPersist, IID_IClassFactory, &answer)),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(refused(component_.classObject(__uuidof(About), IID_IDispatch, &answer)), E_NOINTERFACE);
    EXPECT_EQ(component_.classObject(__uuidof(About), IID_IClassFactory, nullptr), E_POINTER);
}

TEST_F(CoclassesTest, DescribeThemselvesTheirErrorsAndTheirSafety) {
    constexpr DWORD both = INTERFACESAFE_FOR_UNTRUSTED_CALLER | INTERFACESAFE_FOR_UNTRUSTED_DATA;
    forEach([&](const Made& made) {
        const GUID interfaceId = guidOf(*made.defaultInterface);
        const auto errors = made.object.query<ISupportErrorInfo>();
        EXPECT_EQ(errors->InterfaceSupportsErrorInfo(interfaceId), S_OK);
        EXPECT_EQ(errors->InterfaceSupportsErrorInfo(IID_IObjectSafety), S_FALSE);

        ComPtr<ITypeInfo> info;
        ASSERT_EQ(made.object.query<IProvideClassInfo>()->GetClassInfo(info.put()), S_OK);
        EXPECT_EQ(guidOf(*info), made.clsid);
        UINT count = 0;
        EXPECT_EQ(made.object->GetTypeInfoCount(&count), S_OK);
        EXPECT_EQ(count, 1U);
        EXPECT_EQ(made.object->GetTypeInfo(1, LOCALE_USER_DEFAULT, info.put()), DISP_E_BADINDEX);
        ASSERT_EQ(made.object->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.put()), S_OK);
        EXPECT_EQ(guidOf(*info), interfaceId);

        ComPtr<IObjectSafety> safety;  // MinGW's header has no __uuidof for it
        ASSERT_EQ(made.object->QueryInterface(IID_IObjectSafety, safety.putVoid()), S_OK);
        DWORD supported = 0;
        DWORD enabled = 0;
        EXPECT_EQ(safety->GetInterfaceSafetyOptions(IID_IDispatch, &supported, &enabled), S_OK);
        EXPECT_EQ(supported & enabled, both);
        EXPECT_EQ(safety->SetInterfaceSafetyOptions(IID_IDispatch, both, both), S_OK);
        EXPECT_EQ(safety->SetInterfaceSafetyOptions(IID_IDispatch, 0x80, 0x80), E_FAIL);
        EXPECT_EQ(safety->GetInterfaceSafetyOptions(IID_IPersist, &supported, &enabled), E_NOINTERFACE);
        EXPECT_EQ(safety->SetInterfaceSafetyOptions(IID_IPersist, both, both), E_NOINTERFACE);
    });
}

// Names and plain values are as the system finds them in the type library. Reading the name of a method does
// not call it: scripts ask so whether there is one. A property is read under either flag, and nothing is set
// that can only be read. What nobody would pass breaks nothing and is let go of again.
TEST_F(CoclassesTest, MembersAnswerToWhatTheyAre) {
    const Corvane::Com::SafeArray array(VT_VARIANT, 3);
    const std::vector<VARIANT> odd{variantTo(VT_ARRAY | VT_VARIANT, array.get()),
                                   variantOf(VT_R8, 0x7FF8000000000000), variantOf(VT_ERROR, E_FAIL),
                                   variantOf(VT_CY, -1), variantOf(VT_UNKNOWN)};
    forEach([&](const Made& made) {
        made.forEachMember([&](const FUNCDESC& function) {
            const auto answers = [&](WORD flags) {
                return LateCall(*made.object, function.memid, {}, flags).hr != DISP_E_MEMBERNOTFOUND;
            };
            Bstr name;
            DISPID found = DISPID_UNKNOWN;
            made.defaultInterface->GetDocumentation(function.memid, name.put(), nullptr, nullptr, nullptr);
            LPOLESTR names[] = {name.get()};
            EXPECT_EQ(made.object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &found), S_OK);
            EXPECT_EQ(found, function.memid);
            EXPECT_TRUE(answers(DISPATCH_METHOD));
            EXPECT_TRUE(answers(DISPATCH_METHOD | DISPATCH_PROPERTYGET));
            EXPECT_NE(answers(DISPATCH_PROPERTYGET), function.invkind == INVOKE_FUNC);
            for (auto first = odd.begin(); first != odd.end(); ++first)
                const LateCall call(*made.object, function.memid, {first, odd.end()});
            if (function.invkind == INVOKE_FUNC) {
                EXPECT_FALSE(answers(DISPATCH_PROPERTYPUT));
                return;
            }
            DISPPARAMS none{};
            Variant expected;
            const HRESULT hr =
                made.defaultInterface->Invoke(made.object.get(), function.memid, DISPATCH_PROPERTYGET, &none,
                                              expected.put(), nullptr, nullptr);
            const VARTYPE type = V_VT(&expected.get());
            const LateCall call(*made.object, function.memid, {}, DISPATCH_PROPERTYGET);
            EXPECT_EQ(call.hr, hr);
            if (hr == S_OK) {
                EXPECT_EQ(V_VT(&call.result.get()), type == VT_UI4 ? VARTYPE{VT_I4} : type);
            }
        });
    });
}

// Calls each member of a class, or each that takes an object, with arguments that the type library takes for
// its parameters: `passed` for those that are objects.
void forEachCall(const Made& made, IDispatch* passed, bool takesObjects,
                 const std::function<void(const LateCall&)>& check) {
    made.forEachMember([&](const FUNCDESC& function) {
        std::vector<VARIANT> arguments;
        bool found = false;
        for (SHORT i = 0; i < function.cParams; ++i) {
            const VARTYPE type = function.lprgelemdescParam[i].tdesc.vt;
            found = found || type == VT_PTR;
            arguments.push_back(variantTo(type == VT_PTR || type == VT_DISPATCH ? VT_DISPATCH : VT_EMPTY,
                                          type == VT_PTR ? passed : nullptr));
        }
        if (found || !takesObjects)
            check(LateCall(*made.object, function.memid, arguments));
    });
}

TEST_F(CoclassesTest, NoMemberOfAServiceWorksWithoutTrust) {
    forEach([](const Made& made) {
        if (!made.isService())
            return;
        forEachCall(made, nullptr, false, [](const LateCall& call) {
            EXPECT_EQ(call.failure(), accessDenied);
            EXPECT_EQ(call.description(), deniedText);
        });
    });
}

TEST_F(CoclassesTest, NullAndForeignObjectsAreTakenForWhatTheyAre) {
    ForeignObject foreign(E_NOINTERFACE);
    forEach([&](const Made& made) {
        if (made.name == L"GuiService")  // takes texts only, and would ask the user
            return;
        if (made.hasSite())
            setSite(made.object, TrustedPage::address);
        for (IDispatch* const object :
             {static_cast<IDispatch*>(nullptr), static_cast<IDispatch*>(&foreign)}) {
            forEachCall(made, object, true, [&](const LateCall& call) {
                // What was never opened says that first.
                if (made.name == L"CertificateStore" || made.name == L"ZipArchive") {
                    EXPECT_TRUE(FAILED(call.failure()));
                } else {
                    EXPECT_EQ(call.failure(), object ? E_NOINTERFACE : E_POINTER);
                }
            });
        }
    });
    EXPECT_EQ(foreign.references(), 0U);
}

}  // namespace
}  // namespace robustness
