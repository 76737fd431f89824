// The component comes, works and goes, again and again, and leaves nothing behind.
#include "component.h"
#include "late_call.h"
#include "usage.h"

#include <functional>

namespace robustness {
namespace {

// Repeats a piece of work and sees what a round of it keeps, on average. The first rounds may fill caches of
// the system.
void expectKept(int rounds, std::size_t blocks, std::size_t heapBytes, const std::function<void()>& work) {
    for (int i = 0; i < 10; ++i)
        work();
    const Usage before = currentUsage();
    for (int i = 0; i < rounds; ++i)
        work();
    const Usage after = currentUsage();
    // What the system itself keeps now and then is far less than once a round.
    const auto count = static_cast<std::size_t>(rounds);
    EXPECT_LE(after.handles, before.handles + 2);
    EXPECT_LE(after.blocks, before.blocks + count * blocks + count / 2);
    EXPECT_LE(after.heapBytes, before.heapBytes + count * (heapBytes + 16));
    EXPECT_LE(after.privateBytes, before.privateBytes + count * heapBytes + (std::size_t{2} << 20));
}

void expectUnloaded() {
    EXPECT_EQ(::GetModuleHandleW(L"VetrelCorvane2.dll"), nullptr);
}

// A little of everything that loads something: type information, a heap block, error information.
void useOnce(const Component& component) {
    const auto object = component.create<IBinaryObject>(__uuidof(BinaryObject));
    ASSERT_TRUE(object);
    wchar_t name[] = L"GetByte";
    LPOLESTR names[] = {name};
    DISPID member = DISPID_UNKNOWN;
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &member), S_OK);
    EXPECT_EQ(LateCall(*object, member, {variantOf(VT_I4, 0)}).hr, DISP_E_EXCEPTION);
    const auto service = component.create<IBinaryObjectService>(__uuidof(BinaryObjectService));
    const auto site = ComPtr<PlainSite>::adopt(new PlainSite);
    EXPECT_EQ(service.query<IObjectWithSite>()->SetSite(site.get()), S_OK);
    ComPtr<IBinaryObject> made;
    EXPECT_EQ(service->BinaryObjectFromBase64(Bstr(L"QUJD").get(), made.put()), S_OK);
}

// A C++ runtime that is linked into a DLL keeps a few small blocks of its streams and mutexes at each
// unloading.
TEST(LifetimeTest, LoadedAndFreedAHundredTimes) {
    expectKept(100, 20, 3000, [] {
        const Component component;
        useOnce(component);
        EXPECT_EQ(component.canUnload(), S_OK);
    });
    expectUnloaded();
}

TEST_F(ComponentTest, WhatKeepsTheComponent) {
    EXPECT_EQ(component_.canUnload(), S_OK);
    auto factory = component_.factory(__uuidof(BinaryObject));
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    factory.reset();
    EXPECT_EQ(component_.canUnload(), S_FALSE) << "a lock keeps it";
    component_.factory(__uuidof(BinaryObject))->LockServer(FALSE);
    EXPECT_EQ(component_.canUnload(), S_OK);

    auto object = component_.create<IBinaryObject>(__uuidof(BinaryObject));
    EXPECT_EQ(component_.canUnload(), S_FALSE) << "an object keeps it";
    ComPtr<ITypeInfo> info;
    EXPECT_EQ(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.put()), S_OK);
    object.reset();
    EXPECT_EQ(component_.canUnload(), S_OK) << "type information is the system's";
}

// A host may ask between any two calls.
TEST_F(ComponentTest, WorksOnAfterItCouldHaveBeenUnloaded) {
    for (int i = 0; i < 3; ++i) {
        const auto object = component_.create<IBinaryObject>(__uuidof(BinaryObject));
        const LateCall size(*object, 1, {});
        EXPECT_EQ(size.hr, S_OK);
        EXPECT_EQ(component_.canUnload(), S_FALSE);
        EXPECT_EQ(LateCall(*object, 1, {}).hr, S_OK);
    }
}

TEST_F(ComponentTest, TenThousandObjects) {
    const auto maker = service();
    const Bstr text(L"0102");
    std::vector<ComPtr<IBinaryObject>> objects(10000);
    for (auto& object : objects)
        ASSERT_EQ(maker->BinaryObjectFromHex(text.get(), object.put()), S_OK);
    for (const auto& object : objects) {
        ULONG size = 0;
        ASSERT_EQ(object->get_Size(&size), S_OK);
        ASSERT_EQ(size, 2U);
    }
    EXPECT_EQ(component_.canUnload(), S_FALSE);
}

// Each way through a method, the failing ones included.
TEST_F(ComponentTest, CallsKeepNothing) {
    const auto maker = service();
    const auto object = bytes(L"010203");
    expectKept(200, 0, 0, [&] {
        ComPtr<IBinaryObject> made;
        Bstr text;
        VARIANT_BOOL equal = VARIANT_FALSE;
        EXPECT_EQ(maker->BinaryObjectFromString(Bstr(L"текст").get(), CP_UTF8, made.put()), S_OK);
        EXPECT_EQ(made->Equals(object.get(), &equal), S_OK);
        EXPECT_EQ(made->ToBase64(text.put()), S_OK);
        EXPECT_EQ(made->ToString(CP_UTF8, text.put()), S_OK);
        EXPECT_EQ(LateCall(*object, 8, {variantOf(VT_I4, 0), variantOf(VT_I4, 3)}).hr, S_OK);
        EXPECT_NE(object->ToString(99999, text.put()), S_OK);
        EXPECT_NE(object->Equals(nullptr, &equal), S_OK);
        EXPECT_EQ(made->Reset(), S_OK);
        EXPECT_NE(maker->BinaryObjectFromHex(Bstr(L"xy").get(), made.put()), S_OK);
        EXPECT_NE(maker->BinaryObjectFromFile(Bstr(L"no such file").get(), made.put()), S_OK);
        ::SetErrorInfo(0, nullptr);
    });
}

}  // namespace
}  // namespace robustness
