// What holds of every coclass of the type library: the rules of COM, and that no page uses a service
// untrusted.
#include "../unit/dialog_driver.h"
#include "component.h"

#include <objsafe.h>

#include <functional>
#include <set>

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
    ComPtr<IUnknown> object;

    bool isService() const {
        return name.ends_with(L"Service") || name == L"CertificateStore" || name == L"CryptoProvider";
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
            Made made;
            ASSERT_EQ(library->GetTypeInfo(i, info.put()), S_OK);
            library->GetDocumentation(static_cast<INT>(i), name.put(), nullptr, nullptr, nullptr);
            made.name = name.view();
            made.clsid = guidOf(*info);
            ASSERT_EQ(info->GetRefTypeOfImplType(0, &reference), S_OK);
            ASSERT_EQ(info->GetRefTypeInfo(reference, made.defaultInterface.put()), S_OK);
            SCOPED_TRACE(::testing::PrintToString(made.name));
            made.object = component_.create<IUnknown>(made.clsid);
            ASSERT_TRUE(made.object);
            check(made);
        }
    }
};

TEST_F(CoclassesTest, EveryInterfaceLeadsToEveryOther) {
    forEach([](const Made& made) {
        const IID offered[] = {IID_IUnknown,      IID_IDispatch,         guidOf(*made.defaultInterface),
                               IID_IObjectSafety, IID_ISupportErrorInfo, IID_IProvideClassInfo};
        for (const IID& from : offered) {
            const auto first = ask(*made.object, from);
            ASSERT_TRUE(first);
            for (const IID& to : offered)
                EXPECT_TRUE(ask(*first, to));
            // One object has one IUnknown, whichever way it is asked for.
            EXPECT_EQ(ask(*first, IID_IUnknown).get(), made.object.get());
        }
        for (const IID& iid : {IID_IMarshal, IID_IPersist, IID_IClassFactory}) {
            void* answer = made.object.get();
            EXPECT_EQ(made.object->QueryInterface(iid, &answer), E_NOINTERFACE);
            EXPECT_EQ(answer, nullptr);
        }
        EXPECT_EQ(made.object->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
        // Those that ask whose page they are in, or whose results do.
        const bool hasSite = made.isService() || made.name == L"About" || made.name == L"BinaryObject" ||
                             made.name == L"BinaryStream" || made.name == L"FileObject";
        EXPECT_EQ(static_cast<bool>(ask(*made.object, IID_IObjectWithSite)), hasSite);
        EXPECT_EQ(referencesOf(*made.object), 1U);
    });
}

TEST_F(CoclassesTest, FactoriesGiveWhatIsAskedForOrNothing) {
    void* answer = this;
    const auto refused = [&](HRESULT hr) {
        EXPECT_EQ(std::exchange(answer, this), nullptr);
        return hr;
    };
    forEach([&](const Made& made) {
        const auto factory = component_.factory(made.clsid);
        EXPECT_EQ(refused(factory->CreateInstance(made.object.get(), IID_IUnknown, &answer)),
                  CLASS_E_NOAGGREGATION);
        EXPECT_EQ(refused(factory->CreateInstance(nullptr, IID_IMarshal, &answer)), E_NOINTERFACE);
        EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    });
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
        const auto dispatch = made.object.query<IDispatch>();
        UINT count = 0;
        EXPECT_EQ(dispatch->GetTypeInfoCount(&count), S_OK);
        EXPECT_EQ(count, 1U);
        EXPECT_EQ(dispatch->GetTypeInfo(1, LOCALE_USER_DEFAULT, info.put()), DISP_E_BADINDEX);
        ASSERT_EQ(dispatch->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.put()), S_OK);
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

// Runs the check for each member of a class that is not IUnknown's or IDispatch's own.
void forEachMember(const Made& made, const std::function<void(const FUNCDESC&)>& check) {
    FUNCDESC* function = nullptr;
    int count = 0;
    for (UINT i = 0; made.defaultInterface->GetFuncDesc(i, &function) == S_OK; ++i) {
        SCOPED_TRACE(function->memid);
        if (function->memid < 0x60000000) {
            check(*function);
            ++count;
        }
        made.defaultInterface->ReleaseFuncDesc(function);
    }
    EXPECT_GT(count, 0);
}

// Arguments that the type library takes for the member's parameters, `object` for those that are objects.
std::vector<VARIANT> argumentsOf(const FUNCDESC& function, IDispatch* object) {
    std::vector<VARIANT> arguments;
    for (SHORT parameter = 0; parameter < function.cParams; ++parameter) {
        const VARTYPE type = function.lprgelemdescParam[parameter].tdesc.vt;
        arguments.push_back(variantTo(type == VT_PTR || type == VT_DISPATCH ? VT_DISPATCH : VT_EMPTY,
                                      type == VT_PTR ? object : nullptr));
    }
    return arguments;
}

bool takesObjects(const FUNCDESC& function) {
    bool found = false;
    for (SHORT parameter = 0; parameter < function.cParams; ++parameter)
        found = found || function.lprgelemdescParam[parameter].tdesc.vt == VT_PTR;
    return found;
}

// Names and plain values are as the system finds them in the type library. Reading the name of a method does
// not call it: scripts ask so whether there is one. A property is read under either flag, and nothing is set
// that can only be read.
TEST_F(CoclassesTest, MembersAnswerToWhatTheyAre) {
    forEach([](const Made& made) {
        const auto dispatch = made.object.query<IDispatch>();
        forEachMember(made, [&](const FUNCDESC& function) {
            const auto answers = [&](WORD flags) {
                return LateCall(*dispatch, function.memid, {}, flags).hr != DISP_E_MEMBERNOTFOUND;
            };
            Bstr name;
            DISPID found = DISPID_UNKNOWN;
            made.defaultInterface->GetDocumentation(function.memid, name.put(), nullptr, nullptr, nullptr);
            LPOLESTR names[] = {name.get()};
            EXPECT_EQ(dispatch->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &found), S_OK);
            EXPECT_EQ(found, function.memid);
            const bool isMethod = function.invkind == INVOKE_FUNC;
            if (!isMethod) {
                DISPPARAMS none{};
                Variant expected;
                const HRESULT hr =
                    made.defaultInterface->Invoke(dispatch.get(), function.memid, DISPATCH_PROPERTYGET, &none,
                                                  expected.put(), nullptr, nullptr);
                const VARTYPE type = V_VT(&expected.get());
                const LateCall call(*dispatch, function.memid, {}, DISPATCH_PROPERTYGET);
                EXPECT_EQ(call.hr, hr);
                if (hr == S_OK) {
                    EXPECT_EQ(V_VT(&call.result.get()), type == VT_UI4 ? VARTYPE{VT_I4} : type);
                }
            }
            EXPECT_NE(answers(DISPATCH_PROPERTYGET), isMethod);
            EXPECT_TRUE(answers(DISPATCH_METHOD));
            EXPECT_TRUE(answers(DISPATCH_METHOD | DISPATCH_PROPERTYGET));
            if (isMethod) {
                EXPECT_FALSE(answers(DISPATCH_PROPERTYPUT));
            }
        });
    });
}

TEST_F(CoclassesTest, NoMemberOfAServiceWorksWithoutTrust) {
    forEach([](const Made& made) {
        if (!made.isService() || made.name == L"About")
            return;
        std::set<MEMBERID> asked;
        forEachMember(made, [&](const FUNCDESC& function) {
            asked.insert(function.memid);
            const LateCall call(*made.object.query<IDispatch>(), function.memid,
                                argumentsOf(function, nullptr));
            EXPECT_EQ(call.failure(), accessDenied);
            EXPECT_EQ(viewOf(call.exception.bstrDescription), L"[1001] Доступ для текущего домена запрещен");
        });
        // What two classes have in common stands in an interface of its own.
        std::wstring common = L"EncryptStreamAsync";
        LPOLESTR name = common.data();
        DISPID id = DISPID_UNKNOWN;
        if (made.name.starts_with(L"Crypto")) {
            EXPECT_EQ(made.object.query<IDispatch>()->GetIDsOfNames(IID_NULL, &name, 1, 0, &id), S_OK);
            EXPECT_TRUE(asked.contains(id));
        }
    });
}

TEST_F(CoclassesTest, NullAndForeignObjectsAreTakenForWhatTheyAre) {
    ForeignObject foreign(E_NOINTERFACE);
    forEach([&](const Made& made) {
        if (made.name == L"GuiService")  // takes texts only, and would ask the user
            return;
        host_.href = TrustedPage::address;
        if (ask(*made.object, IID_IObjectWithSite)) {
            ASSERT_EQ(made.object.query<IObjectWithSite>()->SetSite(host_.site()), S_OK);
        }
        forEachMember(made, [&](const FUNCDESC& function) {
            if (!takesObjects(function))
                return;
            for (IDispatch* const object :
                 {static_cast<IDispatch*>(nullptr), static_cast<IDispatch*>(&foreign)}) {
                const LateCall call(*made.object.query<IDispatch>(), function.memid,
                                    argumentsOf(function, object));
                // What was never opened says that first.
                if (made.name == L"CertificateStore" || made.name == L"ZipArchive") {
                    EXPECT_TRUE(FAILED(call.failure()));
                } else {
                    EXPECT_EQ(call.failure(), object ? E_NOINTERFACE : E_POINTER);
                }
            }
        });
    });
    EXPECT_EQ(foreign.references(), 0U);
}

TEST_F(CoclassesTest, MethodsAskTheUserAndHasAccessNeverDoes) {
    constexpr wchar_t page[] = L"https://asked.example/";
    const Corvane::DialogDriver driver(
        [](HWND dialog) { ::SendDlgItemMessageW(dialog, IDOK, BM_CLICK, 0, 0); });
    const auto about = serviceOf<IAbout>(__uuidof(About), page);
    const auto maker = serviceOf<IBinaryObjectService>(__uuidof(BinaryObjectService), page);
    const auto hasAccess = [&] {
        VARIANT_BOOL access = 1;
        EXPECT_EQ(about->get_HasAccess(&access), S_OK);
        return access;
    };
    EXPECT_EQ(hasAccess(), VARIANT_FALSE);
    EXPECT_EQ(driver.count(), 0);
    ComPtr<IBinaryObject> made;
    EXPECT_EQ(maker->BinaryObjectFromHex(nullptr, made.put()), S_OK);
    EXPECT_EQ(hasAccess(), VARIANT_TRUE);
    EXPECT_EQ(driver.count(), 1);
}

}  // namespace
}  // namespace robustness
