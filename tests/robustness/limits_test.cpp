// Big buffers and their end.
#include "component.h"

#include <cstring>

namespace robustness {
namespace {

class LimitsTest : public ComponentTest {
protected:
    // `size` bytes, which is even, all of one value but the last two.
    ComPtr<IBinaryObject> bigBytes(std::size_t size) {
        const Bstr text = Bstr::uninitialized(size / sizeof(OLECHAR));
        std::memset(text.get(), 0x41, size);
        std::memset(text.get() + size / sizeof(OLECHAR) - 1, 0x42, sizeof(OLECHAR));
        ComPtr<IBinaryObject> object;
        EXPECT_EQ(service()->BinaryObjectFromUnicodeString(text.get(), object.put()), S_OK);
        return object;
    }

    void expectEqual(IBinaryObject& left, IBinaryObject& right) {
        VARIANT_BOOL equal = VARIANT_FALSE;
        EXPECT_EQ(left.Equals(&right, &equal), S_OK);
        EXPECT_EQ(equal, VARIANT_TRUE);
    }
};

void expectText(const Bstr& text, std::size_t size, std::wstring_view end) {
    ASSERT_EQ(text.view().size(), size);
    EXPECT_EQ(text.view().substr(size - end.size()), end);
}

TEST_F(LimitsTest, AHundredMebibytesToTextAndBack) {
    constexpr std::size_t big = std::size_t{100} << 20;
    const auto maker = service();
    const auto object = bigBytes(big);
    ComPtr<IBinaryObject> back;
    Bstr text;
    ASSERT_EQ(object->ToHexString(text.put()), S_OK);
    expectText(text, big * 2, L"414242");
    ASSERT_EQ(maker->BinaryObjectFromHex(text.get(), back.put()), S_OK);
    expectEqual(*object, *back);
    back.reset();
    ASSERT_EQ(object->ToBase64(text.put()), S_OK);
    // 104857600 = 1839607 * 57 + 1: that many lines of 76 characters with their ends, and 4 characters.
    expectText(text, std::size_t{1839607} * 78 + 4, L"\r\nQg==");
    ASSERT_EQ(maker->BinaryObjectFromBase64(text.get(), back.put()), S_OK);
    expectEqual(*object, *back);
    back.reset();
    ASSERT_EQ(object->ToString(1251, text.put()), S_OK);
    expectText(text, big, L"ABB");
}

// An array of all the bytes would need 16 or 24 bytes for each, which 32 bits cannot count.
TEST_F(LimitsTest, AnArrayThatCannotExistIsRefused) {
    constexpr std::size_t size = std::size_t{270} << 20;
    const auto object = bigBytes(size);
    ASSERT_TRUE(object);
    Variant array;
    EXPECT_EQ(object->ToArray(0, size, array.put()), E_OUTOFMEMORY);
    EXPECT_EQ(V_VT(&array.get()), VT_EMPTY);
    ASSERT_EQ(object->ToArray(size - 2, ~ULONG{0}, array.put()), S_OK);
    ASSERT_EQ(V_VT(&array.get()), VT_ARRAY | VT_VARIANT);
    EXPECT_EQ(V_ARRAY(&array.get())->rgsabound[0].cElements, 2U);
}

// 64 bits hold it all; 32 bits run out of addresses on the way, and the stream is then as it was.
TEST_F(LimitsTest, AStreamInMemoryOfThreeGibibytes) {
    constexpr double wanted = 3.0 * (1 << 30);
    const auto stream = component_.create<IBinaryStream>(__uuidof(BinaryStream));
    ASSERT_EQ(stream->Write(bytes(L"0102").get(), 0, 2), S_OK);
    const double end = sizeof(void*) == 8 ? wanted : 2;
    EXPECT_EQ(stream->Resize(wanted), sizeof(void*) == 8 ? S_OK : E_OUTOFMEMORY);
    double size = 0;
    EXPECT_EQ(stream->get_Size(&size), S_OK);
    EXPECT_EQ(size, end);
    double position = 0;
    EXPECT_EQ(stream->Seek(-1, 2, &position), S_OK);
    EXPECT_EQ(position, end - 1);
    EXPECT_EQ(stream->Write(bytes(L"FFEE").get(), 0, 2), S_OK);
    EXPECT_EQ(stream->Seek(-2, 2, &position), S_OK);
    ComPtr<IBinaryObject> tail;
    EXPECT_EQ(stream->Read(10, tail.put()), S_OK);
    EXPECT_EQ(hexOf(*tail.get()), L"FFEE");
    EXPECT_EQ(stream->Seek(0, 0, &position), S_OK);
    EXPECT_EQ(stream->Read(1, tail.put()), S_OK);
    EXPECT_EQ(hexOf(*tail.get()), L"01");
}

#ifndef _WIN64
TEST_F(LimitsTest, MoreOfAFileThanMemoryHolds) {
    ComPtr<IFileObject> file;
    const auto disk = serviceOf<IFileSystemService>(__uuidof(FileSystemService));
    ASSERT_EQ(disk->CreateTempFile(VARIANT_FALSE, file.put()), S_OK);
    ASSERT_EQ(file->Resize(5e9), S_OK);
    double position = 0;
    EXPECT_EQ(file->Seek(0, 0, &position), S_OK);
    ComPtr<IBinaryObject> content;
    EXPECT_EQ(file->Read(3'000'000'000, content.put()), E_OUTOFMEMORY);
    EXPECT_FALSE(content);
    EXPECT_EQ(file->Close(), S_OK);
}
#endif

}  // namespace
}  // namespace robustness
