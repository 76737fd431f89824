// Big buffers, and their end.
#include "component.h"

#include <cstring>

namespace robustness {
namespace {

constexpr std::size_t big = std::size_t{100} << 20;

class LimitsTest : public ComponentTest {
protected:
    // `size` bytes, which is even, all of one value but the last.
    ComPtr<IBinaryObject> bigBytes(std::size_t size) const {
        const Bstr text = Bstr::uninitialized(size / sizeof(OLECHAR));
        std::memset(text.get(), 0x41, size);
        std::memset(text.get() + size / sizeof(OLECHAR) - 1, 0x42, sizeof(OLECHAR));
        ComPtr<IBinaryObject> object;
        EXPECT_EQ(service()->BinaryObjectFromUnicodeString(text.get(), object.put()), S_OK);
        return object;
    }
};

std::wstring_view lastOf(const Bstr& text, std::size_t count) {
    return text.view().size() < count ? std::wstring_view() : text.view().substr(text.view().size() - count);
}

TEST_F(LimitsTest, AHundredMebibytesOfBytes) {
    const auto object = bigBytes(big);
    ASSERT_TRUE(object);
    ULONG size = 0;
    unsigned char byte = 0;
    EXPECT_EQ(object->get_Size(&size), S_OK);
    EXPECT_EQ(size, big);
    EXPECT_EQ(object->GetByte(big - 1, &byte), S_OK);
    EXPECT_EQ(byte, 0x42);
    EXPECT_EQ(static_cast<unsigned long>(object->GetByte(big, &byte)), 0x80040212);
}

TEST_F(LimitsTest, AHundredMebibytesToTextAndBack) {
    const auto maker = service();
    const auto object = bigBytes(big);
    ComPtr<IBinaryObject> back;
    VARIANT_BOOL equal = VARIANT_FALSE;
    Bstr text;
    ASSERT_EQ(object->ToHexString(text.put()), S_OK);
    EXPECT_EQ(text.view().size(), big * 2);
    EXPECT_EQ(lastOf(text, 6), L"414242");
    ASSERT_EQ(maker->BinaryObjectFromHex(text.get(), back.put()), S_OK);
    text = Bstr();
    EXPECT_EQ(object->Equals(back.get(), &equal), S_OK);
    EXPECT_EQ(equal, VARIANT_TRUE);
    back.reset();

    ASSERT_EQ(object->ToBase64(text.put()), S_OK);
    // 104857600 = 1839607 * 57 + 1: that many lines of 76 characters with their ends, and 4 characters.
    EXPECT_EQ(text.view().size(), std::size_t{1839607} * 78 + 4);
    EXPECT_EQ(lastOf(text, 6), L"\r\nQg==");
    ASSERT_EQ(maker->BinaryObjectFromBase64(text.get(), back.put()), S_OK);
    text = Bstr();
    equal = VARIANT_FALSE;
    EXPECT_EQ(object->Equals(back.get(), &equal), S_OK);
    EXPECT_EQ(equal, VARIANT_TRUE);
    back.reset();

    ASSERT_EQ(object->ToString(1251, text.put()), S_OK);
    EXPECT_EQ(text.view().size(), big);
    EXPECT_EQ(lastOf(text, 3), L"ABB");
}

TEST_F(LimitsTest, AHundredMebibytesThroughAFile) {
    const auto object = bigBytes(big);
    wchar_t folder[MAX_PATH];
    wchar_t path[MAX_PATH];
    ::GetTempPathW(MAX_PATH, folder);
    ASSERT_NE(::GetTempFileNameW(folder, L"crv", 0, path), 0U);
    ASSERT_EQ(object->ToFile(Bstr(path).get()), S_OK);
    ComPtr<IBinaryObject> back;
    EXPECT_EQ(service()->BinaryObjectFromFile(Bstr(path).get(), back.put()), S_OK);
    VARIANT_BOOL equal = VARIANT_FALSE;
    EXPECT_EQ(object->Equals(back.get(), &equal), S_OK);
    EXPECT_EQ(equal, VARIANT_TRUE);
    ::DeleteFileW(path);
}

// An array of all the bytes would need 16 or 24 bytes for each, which 32 bits cannot count.
TEST_F(LimitsTest, AnArrayThatCannotExistIsRefused) {
    constexpr std::size_t size = std::size_t{270} << 20;
    const auto object = bigBytes(size);
    ASSERT_TRUE(object);
    VARIANT array;
    ::VariantInit(&array);
    EXPECT_EQ(object->ToArray(0, size, &array), E_OUTOFMEMORY);
    EXPECT_EQ(V_VT(&array), VT_EMPTY);
    ASSERT_EQ(object->ToArray(size - 2, ~ULONG{0}, &array), S_OK);
    ULONG elements = 0;
    if (V_VT(&array) == (VT_ARRAY | VT_VARIANT))
        elements = V_ARRAY(&array)->rgsabound[0].cElements;
    EXPECT_EQ(elements, 2U);
    ::VariantClear(&array);
}

}  // namespace
}  // namespace robustness
