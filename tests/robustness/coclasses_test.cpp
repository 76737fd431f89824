// What holds of every coclass of the type library: the rules of COM, that no page uses a service untrusted,
// what becomes of arguments that no careful caller passes, and what a caller sees of a failure.
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

// One object has one IUnknown, whichever of its interfaces it is asked through.
TEST_F(CoclassesTest, AreOneObjectThatDescribesItselfItsErrorsAndItsSafety) {
    constexpr DWORD both = INTERFACESAFE_FOR_UNTRUSTED_CALLER | INTERFACESAFE_FOR_UNTRUSTED_DATA;
    forEach([&](const Made& made) {
        const GUID interfaceId = guidOf(*made.defaultInterface);
        const auto identity = ask(*made.object, IID_IUnknown);
        for (const IID& offered :
             {IID_IDispatch, interfaceId, IID_IObjectSafety, IID_ISupportErrorInfo, IID_IProvideClassInfo}) {
            const auto other = ask(*made.object, offered);
            ASSERT_TRUE(other);
            EXPECT_EQ(ask(*other, IID_IUnknown).get(), identity.get());
            EXPECT_TRUE(ask(*other, interfaceId));
        }
        void* answer = made.object.get();
        EXPECT_EQ(made.object->QueryInterface(IID_IMarshal, &answer), E_NOINTERFACE);
        EXPECT_EQ(answer, nullptr);
        EXPECT_EQ(made.object->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
        EXPECT_EQ(static_cast<bool>(ask(*made.object, IID_IObjectWithSite)), made.hasSite());

        EXPECT_EQ(made.object.query<ISupportErrorInfo>()->InterfaceSupportsErrorInfo(interfaceId), S_OK);
        ComPtr<ITypeInfo> info;
        ASSERT_EQ(made.object.query<IProvideClassInfo>()->GetClassInfo(info.put()), S_OK);
        EXPECT_EQ(guidOf(*info), made.clsid);
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
    });
}

// Names are those of the type library. Reading the name of a method does not call it: scripts ask so whether
// there is one. A property is read under either flag, and no method is set. What nobody would pass breaks
// nothing and is let go of again.
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
            EXPECT_TRUE(function.invkind != INVOKE_FUNC || !answers(DISPATCH_PROPERTYPUT));
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
            EXPECT_EQ(call.failure(), failureOf(1001));
            EXPECT_EQ(call.description(), L"[1001] Доступ для текущего домена запрещен");
        });
    });
}

// An object that says it is of the component and is not: answers every interface it is asked for with itself,
// and GUID_NULL with `answer`, or a failure. All that stands behind it are the methods of IDispatch: a
// component that called any further one would crash.
class ForeignObject final : public ScriptHost::Unscriptable<IDispatch> {
public:
    explicit ForeignObject(HRESULT hr, IUnknown* answer = nullptr) : hr_(hr), answer_(answer) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        IUnknown* const answer = iid == GUID_NULL ? answer_ : this;
        if (answer)
            answer->AddRef();
        *object = answer;
        return iid == GUID_NULL ? hr_ : S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override { return --references_; }

private:
    HRESULT hr_;
    IUnknown* answer_;
    std::atomic<ULONG> references_{1};
};

TEST_F(CoclassesTest, NullAndForeignObjectsAreTakenForWhatTheyAre) {
    ForeignObject unknown(E_NOINTERFACE);
    ForeignObject unwilling(E_ACCESSDENIED);
    ForeignObject empty(S_OK);
    ForeignObject typeless(S_OK, host_.site());
    const std::pair<IDispatch*, HRESULT> rows[] = {{nullptr, E_POINTER},
                                                   {&unknown, E_NOINTERFACE},
                                                   {&unwilling, E_ACCESSDENIED},
                                                   {&empty, E_NOINTERFACE},
                                                   {&typeless, E_NOINTERFACE}};
    forEach([&](const Made& made) {
        if (made.name == L"GuiService")  // takes texts only, and would ask the user
            return;
        if (made.hasSite())
            setSite(made.object, TrustedPage::address);
        // What was never opened says that first.
        const bool isClosed = made.name == L"CertificateStore" || made.name == L"ZipArchive";
        for (const auto& [object, failure] : rows) {
            forEachCall(made, object, true, [&, expected = failure](const LateCall& call) {
                EXPECT_TRUE(FAILED(call.failure()));
                EXPECT_TRUE(isClosed || (call.failure() == expected && call.description().empty()));
            });
            EXPECT_TRUE(!object || referencesOf(*object) == 1);
        }
    });
}

// Of each way to answer one: with a number, a text, an object, an array, and without a frame.
TEST_F(CoclassesTest, NullOutputs) {
    const auto object = bytes(L"00");
    for (const HRESULT hr : {object->Equals(object.get(), nullptr), object->ToHexString(nullptr),
                             object->ToArray(0, 1, nullptr), service()->BinaryObjectFromHex(nullptr, nullptr),
                             object->get_Size(nullptr), object->GetTypeInfo(0, 0, nullptr)})
        EXPECT_EQ(hr, E_POINTER);
    const Bstr before(L"before");
    BSTR text = before.get();
    EXPECT_NE(object->ToString(99999, &text), S_OK);
    EXPECT_EQ(text, before.get()) << "a failure touches no output";
}

// What a late-bound call does to the error information that the thread already had.
TEST_F(CoclassesTest, OnlyAReportedFailureReplacesTheEarlierOne) {
    const auto object = bytes(L"0102");
    const auto store = serviceOf<ICertificateStore>(__uuidof(CertificateStore));
    const Bstr word(L"word");
    const struct {
        IDispatch* object;
        DISPID member;
        std::vector<VARIANT> arguments;
        HRESULT failure;
        const wchar_t* text = nullptr;  // null where none is reported
    } rows[] = {
        {object.get(), 1, {}, S_OK},                                               // a plain getter
        {object.get(), 2, {variantOf(VT_I4, 1)}, S_OK},                            // a method
        {object.get(), 3, {variantOf(VT_DISPATCH)}, E_POINTER},                    // fails without any
        {object.get(), 2, {variantTo(VT_BSTR, word.get())}, DISP_E_TYPEMISMATCH},  // is not called
        {object.get(), 4711, {}, DISP_E_MEMBERNOTFOUND},
        {object.get(), 0x60000002, {}, DISP_E_MEMBERNOTFOUND},  // IUnknown's Release in type libraries
        {object.get(), 2, {variantOf(VT_I4, 2)}, failureOf(18), L"Байта с указанным индексом не существует"},
        // a property
        {store.get(), 3, {}, failureOf(604), L"[604] Необходимо открыть хранилище сертификатов"},
    };
    for (const auto& row : rows) {
        ComPtr<ICreateErrorInfo> creator;
        ASSERT_EQ(::CreateErrorInfo(creator.put()), S_OK);
        std::wstring earlier(L"earlier");
        creator->SetDescription(earlier.data());
        ::SetErrorInfo(0, creator.query<IErrorInfo>().get());
        const LateCall made(*row.object, row.member, row.arguments);
        EXPECT_EQ(made.failure(), row.failure);
        EXPECT_EQ(made.description(), row.text ? row.text : L"");
        EXPECT_EQ(Corvane::Test::takeDescription(), row.text ? L"none" : L"earlier");
        EXPECT_TRUE(!row.text || made.hr == DISP_E_EXCEPTION);
    }
}

// As Visual Basic passes "stream.Seek location:=2, Position:=-1", and its own variables by reference.
TEST_F(CoclassesTest, ArgumentsComeByNameAndByReference) {
    ComPtr<IBinaryStream> stream;
    ASSERT_EQ(service()->CreateStream(stream.put()), S_OK);
    ASSERT_EQ(stream->Resize(5), S_OK);
    std::wstring words[] = {L"seek", L"LOCATION", L"position"};
    LPOLESTR names[] = {words[0].data(), words[1].data(), words[2].data()};
    DISPID ids[3] = {};
    ASSERT_EQ(stream->GetIDsOfNames(IID_NULL, names, 3, LOCALE_USER_DEFAULT, ids), S_OK);
    LONG fromEnd = 2;
    VARIANT arguments[] = {variantTo(VT_BYREF | VT_I4, &fromEnd), variantOf(VT_I2, -1)};
    DISPPARAMS parameters{arguments, &ids[1], 2, 2};
    Variant result;
    EXPECT_EQ(stream->Invoke(ids[0], IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                             &parameters, result.put(), nullptr, nullptr),
              S_OK);
    EXPECT_EQ(V_R8(&result.get()), 4);
}

}  // namespace
}  // namespace robustness
