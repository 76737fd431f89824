// What a caller sees of a failure: HRESULT, description, and the ProgID as its source.
#include "component.h"
#include "late_call.h"

#include <array>
#include <functional>

namespace robustness {
namespace {

// The error information needs the ProgID, which COM reads from the registry. Where the component is not
// registered, it is while these tests run.
class ErrorsTest : public ComponentTest {
protected:
    ErrorsTest() : registered_(!isRegistered()) {
        if (registered_) {
            EXPECT_EQ(component_.registerServer(), S_OK);
        }
    }

    ~ErrorsTest() override {
        if (registered_) {
            EXPECT_EQ(component_.unregisterServer(), S_OK);
        }
    }

private:
    static bool isRegistered() {
        LPOLESTR progId = nullptr;
        const HRESULT hr = ::ProgIDFromCLSID(__uuidof(BinaryObject), &progId);
        ::CoTaskMemFree(progId);
        return SUCCEEDED(hr);
    }

    bool registered_;
};

struct Seen {
    std::wstring source;
    std::wstring description;
};

Seen takeErrorInfo() {
    ComPtr<IErrorInfo> info;
    if (::GetErrorInfo(0, info.put()) != S_OK)
        return {L"none", L"none"};
    GUID guid = IID_IUnknown;
    Bstr source;
    Bstr description;
    info->GetGUID(&guid);
    EXPECT_EQ(guid, GUID_NULL);
    info->GetSource(source.put());
    info->GetDescription(description.put());
    return {std::wstring(source.view()), std::wstring(description.view())};
}

std::wstring systemText(DWORD error) {
    wchar_t text[512];
    DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, error, 0, text, 512, nullptr);
    return std::wstring(text, length > 2 ? length - 2 : 0);  // without its line end
}

constexpr wchar_t binaryObject[] = L"VetrelCorvane2.BinaryObject.2.9.9";
constexpr wchar_t binaryObjectService[] = L"VetrelCorvane2.BinaryObjectService.2.9.9";

struct Failure {
    const char* what;
    std::function<HRESULT(IBinaryObject&, IBinaryObjectService&)> call;
    unsigned long hr;
    const wchar_t* source;
    std::wstring description;
};

std::vector<Failure> failures() {
    static ComPtr<IBinaryObject> made;
    static unsigned char byte;
    static Bstr text;
    static Variant array;
    return {
        {"reported without the ladder: no number before the message",
         [](auto& object, auto&) { return object.GetByte(4, &byte); }, 0x80040212, binaryObject,
         L"Байта с указанным индексом не существует"},
        {"an offset beyond the end", [](auto& object, auto&) { return object.ToArray(5, 1, array.put()); },
         0x80040217, binaryObject, L"[23] Смещение превышает размер данных"},
        {"a character that is no digit",
         [](auto&, auto& service) { return service.BinaryObjectFromHex(Bstr(L"0g").get(), made.put()); },
         0x8004020B, binaryObjectService, L"[11] Строка содержит недопустимый HEX символ"},
        {"half a byte",
         [](auto&, auto& service) { return service.BinaryObjectFromHex(Bstr(L"0a1").get(), made.put()); },
         0x8004020C, binaryObjectService, L"[12] Неверная длина HEX строки"},
        {"a code page that does not exist, reading",
         [](auto& object, auto&) { return object.ToString(99999, text.put()); }, 0x80040207, binaryObject,
         L"[7] Ошибка при конвертировании ANSI в Unicode (0x57:" + systemText(0x57) + L")"},
        {"a code page that does not exist, writing",
         [](auto&, auto& service) {
             return service.BinaryObjectFromString(Bstr(L"a").get(), 99999, made.put());
         },
         0x80040208, binaryObjectService,
         L"[8] Ошибка при конвертировании Unicode в ANSI (0x57:" + systemText(0x57) + L")"},
        {"a file that does not exist",
         [](auto&, auto& service) {
             return service.BinaryObjectFromFile(Bstr(L"no such file").get(), made.put());
         },
         0x8004021C, binaryObjectService, L"[28] Ошибка при открытии файла (0x2:" + systemText(2) + L")"},
        {"a folder that does not exist",
         [](auto& object, auto&) { return object.ToFile(Bstr(L"no such folder\\file").get()); }, 0x8004021C,
         binaryObject, L"[28] Ошибка при открытии файла (0x3:" + systemText(3) + L")"},
    };
}

TEST_F(ErrorsTest, EachRungOfTheLadder) {
    const auto object = bytes(L"01020304");
    const auto maker = service();
    for (const Failure& failure : failures()) {
        SCOPED_TRACE(failure.what);
        ::SetErrorInfo(0, nullptr);
        EXPECT_EQ(static_cast<unsigned long>(failure.call(*object, *maker)), failure.hr);
        const Seen seen = takeErrorInfo();
        EXPECT_EQ(seen.source, failure.source);
        EXPECT_EQ(seen.description, failure.description);
    }
}

TEST_F(ErrorsTest, WithoutASiteThereIsNoAccess) {
    const auto maker = component_.create<IBinaryObjectService>(__uuidof(BinaryObjectService));
    ComPtr<IBinaryObject> made;
    EXPECT_EQ(static_cast<unsigned long>(maker->BinaryObjectFromHex(nullptr, made.put())), 0x800405E9);
    const Seen seen = takeErrorInfo();
    EXPECT_EQ(seen.source, binaryObjectService);
    EXPECT_EQ(seen.description, L"[1001] Доступ для текущего домена запрещен");
    EXPECT_FALSE(made);
}

TEST_F(ErrorsTest, ALateBoundCallerGetsTheSameAsAnException) {
    const auto object = bytes(L"01");
    const LateCall call(*object, 2, {variantOf(VT_I4, 1)});
    EXPECT_EQ(call.hr, DISP_E_EXCEPTION);
    EXPECT_EQ(static_cast<unsigned long>(call.exception.scode), 0x80040212);
    EXPECT_EQ(viewOf(call.exception.bstrDescription), L"Байта с указанным индексом не существует");
    EXPECT_EQ(viewOf(call.exception.bstrSource), binaryObject);
}

// Reading a property that fails.
TEST_F(ErrorsTest, ALateBoundReadGetsAnExceptionToo) {
    const auto store = component_.create<ICertificateStore>(__uuidof(CertificateStore));
    const auto site = ComPtr<PlainSite>::adopt(new PlainSite);
    EXPECT_EQ(store.query<IObjectWithSite>()->SetSite(site.get()), S_OK);
    for (const WORD flags : {WORD{DISPATCH_PROPERTYGET}, WORD{DISPATCH_METHOD}}) {
        const LateCall name(*store, 3, {}, flags);
        EXPECT_EQ(name.hr, DISP_E_EXCEPTION);
        EXPECT_EQ(static_cast<unsigned long>(name.exception.scode), 0x8004045C);
        EXPECT_EQ(viewOf(name.exception.bstrDescription), L"[604] Необходимо открыть хранилище сертификатов");
        EXPECT_EQ(viewOf(name.exception.bstrSource), L"VetrelCorvane2.CertificateStore.2.9.9");
    }
}

TEST_F(ErrorsTest, AFailureWithoutInformationIsNotGivenThatOfAnEarlierOne) {
    const auto object = bytes(L"01");
    unsigned char byte = 0;
    object->GetByte(1, &byte);
    VARIANT null = variantOf(VT_DISPATCH);
    const LateCall call(*object, 3, {null});
    EXPECT_EQ(call.failure(), E_POINTER);
    EXPECT_EQ(viewOf(call.exception.bstrDescription), L"");
}

TEST_F(ErrorsTest, OutputsStayAsTheyWere) {
    const auto object = bytes(L"FF");
    const auto maker = service();
    BSTR text = Bstr(L"before").detach();
    const Bstr owner = [&] {
        Bstr taken;
        *taken.put() = text;
        return taken;
    }();
    EXPECT_NE(object->ToString(99999, &text), S_OK);
    EXPECT_EQ(text, owner.get());
    auto* made = object.get();
    EXPECT_NE(maker->BinaryObjectFromHex(Bstr(L"0").get(), &made), S_OK);
    EXPECT_EQ(made, object.get());
}

}  // namespace
}  // namespace robustness
