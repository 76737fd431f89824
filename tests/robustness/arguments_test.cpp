// Arguments that no careful caller passes: null, objects of others, wrong types, zeros inside, nothing at
// all.
#include "component.h"
#include "foreign_object.h"
#include "late_call.h"

#include <array>
#include <filesystem>
#include <string>

namespace robustness {
namespace {

class ArgumentsTest : public ComponentTest {};

TEST_F(ArgumentsTest, ObjectsThatAreNotTheComponentsOwn) {
    struct Row {
        const char* what;
        HRESULT answer;
        bool withObject;
        HRESULT expected;
    };
    constexpr std::array rows{
        Row{"does not know the identifier", E_NOINTERFACE, false, E_NOINTERFACE},
        Row{"refuses in its own way", E_ACCESSDENIED, false, E_ACCESSDENIED},
        Row{"succeeds with nothing", S_OK, false, E_NOINTERFACE},
        Row{"answers with an object of its own", S_OK, true, E_NOINTERFACE},
    };
    const auto object = bytes(L"00");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        ForeignObject behind(E_NOINTERFACE, nullptr);
        ForeignObject foreign(row.answer, row.withObject ? &behind : nullptr);
        VARIANT_BOOL equal = VARIANT_TRUE;
        ::SetErrorInfo(0, nullptr);
        EXPECT_EQ(object->Equals(foreign.as<IBinaryObject>(), &equal), row.expected);
        EXPECT_EQ(equal, VARIANT_TRUE) << "the output is not to be touched";
        ComPtr<IErrorInfo> info;
        EXPECT_EQ(::GetErrorInfo(0, info.put()), S_FALSE) << "no error information goes with it";

        VARIANT argument = variantOf(VT_DISPATCH);
        V_DISPATCH(&argument) = &foreign;
        EXPECT_EQ(LateCall(*object, 3, {argument}).failure(), row.expected);
        EXPECT_EQ(foreign.references(), 0U);
        EXPECT_EQ(behind.references(), 0U);
    }
}

TEST_F(ArgumentsTest, AnObjectOfAnotherClassIsNoBytes) {
    const auto object = bytes(L"00");
    const auto other = service();
    VARIANT_BOOL equal = VARIANT_FALSE;
    auto* const mistaken = static_cast<IBinaryObject*>(static_cast<void*>(other.get()));
    EXPECT_EQ(object->Equals(mistaken, &equal), E_NOINTERFACE);
    EXPECT_EQ(referencesOf(*other), 1U);
}

TEST_F(ArgumentsTest, NullPointers) {
    const auto object = bytes(L"00");
    const auto maker = service();
    VARIANT_BOOL equal = VARIANT_FALSE;
    EXPECT_EQ(object->Equals(nullptr, &equal), E_POINTER);
    EXPECT_EQ(object->Equals(object.get(), nullptr), E_POINTER);
    EXPECT_EQ(object->get_Size(nullptr), E_POINTER);
    EXPECT_EQ(object->GetByte(0, nullptr), E_POINTER);
    EXPECT_EQ(object->ToBase64(nullptr), E_POINTER);
    EXPECT_EQ(object->ToHexString(nullptr), E_POINTER);
    EXPECT_EQ(object->ToString(CP_UTF8, nullptr), E_POINTER);
    EXPECT_EQ(object->ToUnicodeString(nullptr), E_POINTER);
    EXPECT_EQ(object->ToArray(0, 1, nullptr), E_POINTER);
    EXPECT_EQ(maker->BinaryObjectFromHex(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, nullptr, 1, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(object->GetTypeInfoCount(nullptr), E_POINTER);
    EXPECT_EQ(object->GetTypeInfo(0, 0, nullptr), E_POINTER);
    EXPECT_EQ(referencesOf(*object), 1U);
}

TEST_F(ArgumentsTest, ANullTextIsAnEmptyOne) {
    const auto maker = service();
    using FromText = HRESULT (STDMETHODCALLTYPE IBinaryObjectService::*)(BSTR, IBinaryObject**);
    constexpr std::array makers{FromText{&IBinaryObjectService::BinaryObjectFromBase64},
                                FromText{&IBinaryObjectService::BinaryObjectFromHex},
                                FromText{&IBinaryObjectService::BinaryObjectFromUnicodeString}};
    for (const Bstr& text : {Bstr(), Bstr(L"")}) {
        for (const FromText fromText : makers) {
            ComPtr<IBinaryObject> made;
            ASSERT_EQ((maker.get()->*fromText)(text.get(), made.put()), S_OK);
            EXPECT_EQ(hexOf(*made), L"");
        }
        ComPtr<IBinaryObject> made;
        ASSERT_EQ(maker->BinaryObjectFromString(text.get(), 1251, made.put()), S_OK);
        EXPECT_EQ(hexOf(*made), L"");
        EXPECT_EQ(maker->BinaryObjectFromFile(text.get(), made.put()), static_cast<HRESULT>(0x80040228));
    }
}

TEST_F(ArgumentsTest, ZerosInsideTextsAndBytesAreKept) {
    const auto maker = service();
    ComPtr<IBinaryObject> made;
    ASSERT_EQ(maker->BinaryObjectFromUnicodeString(Bstr({L"a\0b", 3}).get(), made.put()), S_OK);
    EXPECT_EQ(hexOf(*made), L"610000006200");
    Bstr text;
    EXPECT_EQ(made->ToUnicodeString(text.put()), S_OK);
    EXPECT_EQ(text.view(), std::wstring_view(L"a\0b", 3));

    ASSERT_EQ(maker->BinaryObjectFromString(Bstr({L"\0я\0", 3}).get(), 1251, made.put()), S_OK);
    EXPECT_EQ(hexOf(*made), L"00FF00");
    EXPECT_EQ(made->ToString(1251, text.put()), S_OK);
    EXPECT_EQ(text.view(), std::wstring_view(L"\0я\0", 3));

    ASSERT_EQ(maker->BinaryObjectFromBase64(Bstr({L"QU\0JD", 5}).get(), made.put()), S_OK);
    EXPECT_EQ(hexOf(*made), L"414243");
    // A zero ends no path, and is no digit.
    EXPECT_EQ(made->ToFile(Bstr({L"robust\0ness", 11}).get()), static_cast<HRESULT>(0x80040228));
    EXPECT_EQ(maker->BinaryObjectFromHex(Bstr({L"0a\0\0", 4}).get(), made.put()),
              static_cast<HRESULT>(0x8004020B));
}

TEST_F(ArgumentsTest, ConversionsOfLateBoundArguments) {
    struct Row {
        const char* what;
        DISPID member;
        std::vector<VARIANT> arguments;
        bool accepted;  // how a refusal is called is up to the system
    };
    VARIANT number = variantOf(VT_I4, 1);
    VARIANT inner = variantOf(VT_VARIANT | VT_BYREF);
    V_VARIANTREF(&inner) = &number;
    Bstr word(L"word");
    VARIANT text = variantOf(VT_BSTR);
    V_BSTR(&text) = word.get();
    Bstr digits(L"1");
    VARIANT textNumber = variantOf(VT_BSTR);
    V_BSTR(&textNumber) = digits.get();
    const VARIANT missing = variantOf(VT_ERROR, DISP_E_PARAMNOTFOUND);
    const auto rows = std::to_array<Row>({
        {"a number by value", 2, {number}, true},
        {"a script's variable by reference", 2, {inner}, true},
        {"digits in a text", 2, {textNumber}, true},
        {"a truth value", 2, {variantOf(VT_BOOL, 0)}, true},
        {"nothing", 2, {variantOf(VT_EMPTY)}, true},
        {"null is no number", 2, {variantOf(VT_NULL)}, false},
        {"a word is no number", 2, {text}, false},
        {"a number below zero", 2, {variantOf(VT_I4, -1)}, false},
        {"no argument", 2, {}, false},
        {"an argument too many", 2, {number, number}, false},
        {"an argument left out that is needed", 2, {missing}, false},
        {"a number is no object", 3, {number}, false},
        {"a member that does not exist", 4711, {}, false},
        {"IUnknown's Release, as type libraries number it", 0x60000002, {}, false},
    });
    const auto object = bytes(L"0102");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        DISPPARAMS parameters{const_cast<VARIANT*>(row.arguments.data()), nullptr,
                              static_cast<UINT>(row.arguments.size()), 0};
        Variant result;
        const HRESULT hr = object->Invoke(row.member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD,
                                          &parameters, result.put(), nullptr, nullptr);
        EXPECT_EQ(hr == S_OK, row.accepted) << std::hex << hr;
    }
}

// Numbers arrive signed, since VBScript knows no unsigned ones but bytes.
TEST_F(ArgumentsTest, TypesOfLateBoundProperties) {
    const auto object = bytes(L"0102");
    const auto about = component_.create<IAbout>(__uuidof(About));
    for (const WORD flags : {WORD{DISPATCH_PROPERTYGET}, WORD{DISPATCH_METHOD | DISPATCH_PROPERTYGET}}) {
        LateCall size(*object, 1, {}, flags);
        ASSERT_EQ(V_VT(&size.result.get()), VT_I4);
        EXPECT_EQ(V_I4(&size.result.get()), 2);
        LateCall version(*about, 1, {}, flags);
        ASSERT_EQ(V_VT(&version.result.get()), VT_BSTR);
        EXPECT_EQ(viewOf(V_BSTR(&version.result.get())), L"2.9.9.41");
        LateCall access(*about, 3, {}, flags);
        ASSERT_EQ(V_VT(&access.result.get()), VT_BOOL);
        EXPECT_EQ(V_BOOL(&access.result.get()), VARIANT_FALSE) << "there is no site";
    }
    LateCall byte(*object, 2, {variantOf(VT_I4, 1)});
    EXPECT_EQ(V_VT(&byte.result.get()), VT_UI1);
}

// The current folder for the time of a test that writes files under odd names; deleted with what is in it.
class ScratchFolder {
public:
    ScratchFolder() : before_(std::filesystem::current_path()) {
        std::filesystem::create_directory(folder_);
        std::filesystem::current_path(folder_);
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::current_path(before_, ignored);
        std::filesystem::remove_all(folder_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

private:
    std::filesystem::path before_;
    std::filesystem::path folder_ = std::filesystem::temp_directory_path() /
                                    ("corvane-robustness-" + std::to_string(::GetCurrentProcessId()));
};

// Every member of every object with one argument of every kind: whatever comes back, nothing is lost or
// broken.
TEST_F(ArgumentsTest, EveryMemberTakesEveryKindOfArgument) {
    const ScratchFolder scratch;
    Bstr text(L"0a");
    VARIANT textArgument = variantOf(VT_BSTR);
    V_BSTR(&textArgument) = text.get();
    ForeignObject foreign(E_NOINTERFACE, nullptr);
    VARIANT foreignArgument = variantOf(VT_DISPATCH);
    V_DISPATCH(&foreignArgument) = &foreign;
    Corvane::Com::SafeArray array(VT_VARIANT, 3);
    VARIANT arrayArgument = variantOf(VT_ARRAY | VT_VARIANT);
    V_ARRAY(&arrayArgument) = array.get();
    Corvane::Com::SafeArray byteArray(VT_UI1, 3);
    VARIANT byteArrayArgument = variantOf(VT_ARRAY | VT_UI1);
    V_ARRAY(&byteArrayArgument) = byteArray.get();
    const std::array arguments{
        variantOf(VT_EMPTY),
        variantOf(VT_NULL),
        variantOf(VT_BOOL, -1),
        variantOf(VT_I1, -1),
        variantOf(VT_UI1, 255),
        variantOf(VT_I2, -1),
        variantOf(VT_I4, -1),
        variantOf(VT_UI4, -1),
        variantOf(VT_I8, -1),
        variantOf(VT_UI8, -1),
        variantOf(VT_R4, 0x7F800000),
        variantOf(VT_R8, 0x7FF8000000000000),
        variantOf(VT_CY, 1),
        variantOf(VT_DATE, 0),
        variantOf(VT_ERROR, E_FAIL),
        variantOf(VT_BSTR),
        variantOf(VT_DISPATCH),
        variantOf(VT_UNKNOWN),
        textArgument,
        foreignArgument,
        arrayArgument,
        byteArrayArgument,
        variantOf(VT_ERROR, DISP_E_PARAMNOTFOUND),
    };
    const auto object = bytes(L"0102");
    const auto maker = service();
    for (IDispatch* const target :
         {static_cast<IDispatch*>(object.get()), static_cast<IDispatch*>(maker.get())}) {
        for (DISPID member = -5; member < 20; ++member) {
            for (const VARIANT& argument : arguments) {
                LateCall one(*target, member, {argument});
                LateCall two(*target, member, {argument, argument});
                LateCall setter(*target, member, {argument}, DISPATCH_PROPERTYPUT);
                EXPECT_NE(setter.hr, S_OK) << "nothing of these objects can be set";
            }
        }
        EXPECT_EQ(referencesOf(*target), 1U);
    }
    EXPECT_EQ(foreign.references(), 0U);
}

}  // namespace
}  // namespace robustness
