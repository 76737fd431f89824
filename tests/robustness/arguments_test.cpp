// Arguments that no careful caller passes, and what a caller sees of a failure.
#include "component.h"

namespace robustness {
namespace {

constexpr HRESULT noSuchByte = failureOf(18);
constexpr wchar_t noSuchByteText[] = L"Байта с указанным индексом не существует";

class ArgumentsTest : public ComponentTest {};

TEST_F(ArgumentsTest, ObjectsThatAreNotTheComponentsOwn) {
    const struct {
        const char* what;
        ForeignObject foreign;
        HRESULT expected;
    } rows[] = {
        {"does not know the identifier", ForeignObject(E_NOINTERFACE), E_NOINTERFACE},
        {"refuses in its own way", ForeignObject(E_ACCESSDENIED), E_ACCESSDENIED},
        {"succeeds with nothing", ForeignObject(S_OK), E_NOINTERFACE},
        {"answers with an object that has no type", ForeignObject(S_OK, host_.site()), E_NOINTERFACE},
    };
    const auto object = bytes(L"00");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        auto* const foreign = const_cast<ForeignObject*>(&row.foreign);
        VARIANT_BOOL equal = VARIANT_TRUE;
        ::SetErrorInfo(0, nullptr);
        EXPECT_EQ(object->Equals(mistakenFor<IBinaryObject>(foreign), &equal), row.expected);
        EXPECT_EQ(equal, VARIANT_TRUE) << "the output is not to be touched";
        ComPtr<IErrorInfo> info;
        EXPECT_EQ(::GetErrorInfo(0, info.put()), S_FALSE) << "no error information goes with it";
        EXPECT_EQ(LateCall(*object, 3, {variantTo(VT_DISPATCH, foreign)}).failure(), row.expected);
        EXPECT_EQ(foreign->references(), 0U);
        EXPECT_EQ(host_.references, 0);
    }
}

// One for each kind of output, and each of the getters that answer without a frame.
TEST_F(ArgumentsTest, NullOutputs) {
    const auto object = bytes(L"00");
    const auto collection = component_.create<ICertificateCollection>(__uuidof(CertificateCollection));
    const auto token = component_.create<IOperationToken>(__uuidof(OperationToken));
    for (const HRESULT hr :
         {object->Equals(object.get(), nullptr), object->ToHexString(nullptr), object->ToArray(0, 1, nullptr),
          service()->BinaryObjectFromHex(nullptr, nullptr), object->get_Size(nullptr),
          object->GetByte(0, nullptr), collection->get_count(nullptr), token->get_IsCanceled(nullptr),
          token->get_Progress(nullptr), object->GetTypeInfoCount(nullptr),
          object->GetTypeInfo(0, 0, nullptr)})
        EXPECT_EQ(hr, E_POINTER);
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, nullptr, 1, 0, nullptr), E_INVALIDARG);
    EXPECT_EQ(referencesOf(*object), 1U);
}

// An error object whose description is "earlier" becomes the thread's.
void setEarlierFailure() {
    ComPtr<ICreateErrorInfo> creator;
    ASSERT_EQ(::CreateErrorInfo(creator.put()), S_OK);
    wchar_t text[] = L"earlier";
    creator->SetDescription(text);
    ::SetErrorInfo(0, creator.query<IErrorInfo>().get());
}

std::wstring takeDescription() {
    ComPtr<IErrorInfo> info;
    Bstr text;
    if (::GetErrorInfo(0, info.put()) != S_OK || info->GetDescription(text.put()) != S_OK)
        return L"none";
    return std::wstring(text.view());
}

// What a late-bound call does to the error information that the thread already had.
TEST_F(ArgumentsTest, OnlyAReportedFailureReplacesTheEarlierOne) {
    const auto object = bytes(L"0102");
    const Bstr word(L"word");
    const auto call = [&](DISPID member, const std::vector<VARIANT>& arguments, HRESULT failure) {
        setEarlierFailure();
        const LateCall made(*object, member, arguments);
        EXPECT_EQ(made.failure(), failure);
        EXPECT_EQ(made.description(), failure == noSuchByte ? noSuchByteText : L"");
        EXPECT_EQ(takeDescription(), failure == noSuchByte ? L"none" : L"earlier");
    };
    call(1, {}, S_OK);                                               // a plain getter
    call(2, {variantOf(VT_I4, 1)}, S_OK);                            // a method
    call(3, {variantOf(VT_DISPATCH)}, E_POINTER);                    // fails without any
    call(2, {variantTo(VT_BSTR, word.get())}, DISP_E_TYPEMISMATCH);  // is not called
    for (const DISPID absent : {4711, 0x60000002})  // IUnknown's Release, as type libraries number it
        call(absent, {}, DISP_E_MEMBERNOTFOUND);
    call(2, {variantOf(VT_I4, 2)}, noSuchByte);
    // Who wants no exception may fetch the information instead.
    VARIANT index = variantOf(VT_I4, 2);
    DISPPARAMS parameters{&index, nullptr, 1, 0};
    Variant result;
    EXPECT_EQ(object->Invoke(2, IID_NULL, 0, DISPATCH_METHOD, &parameters, result.put(), nullptr, nullptr),
              DISP_E_EXCEPTION);
    EXPECT_EQ(takeDescription(), noSuchByteText);
}

TEST_F(ArgumentsTest, AFailureIsAnExceptionOfItsOwnAndTouchesNoOutput) {
    const auto object = bytes(L"01");
    const auto store = serviceOf<ICertificateStore>(__uuidof(CertificateStore));
    for (const WORD flags : {WORD{DISPATCH_PROPERTYGET}, WORD{DISPATCH_METHOD}}) {
        const LateCall name(*store, 3, {}, flags);  // the property "name" of a store that is not open
        EXPECT_EQ(name.hr, DISP_E_EXCEPTION);
        EXPECT_EQ(name.failure(), failureOf(604));
        EXPECT_EQ(name.description(), L"[604] Необходимо открыть хранилище сертификатов");
    }
    const Bstr before(L"before");
    BSTR text = before.get();
    EXPECT_NE(object->ToString(99999, &text), S_OK);
    EXPECT_EQ(text, before.get());
    auto* made = object.get();
    EXPECT_EQ(service()->BinaryObjectFromHex(Bstr(L"0g").get(), &made), failureOf(11));
    EXPECT_EQ(made, object.get());
}

// As Visual Basic passes "stream.Seek location:=2, Position:=-1", and its own variables by reference.
TEST_F(ArgumentsTest, ArgumentsComeByNameAndByReference) {
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
