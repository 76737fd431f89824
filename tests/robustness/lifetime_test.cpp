// The component comes, works and goes, on one thread and on many, and leaves nothing behind.
#include "component.h"

#include <array>
#include <functional>
#include <thread>

namespace robustness {
namespace {

// What this process holds of what the system gives out.
struct Usage {
    std::size_t handles = 0;
    DWORD slot = ::TlsAlloc();  // the first thread-local one that is free
    std::size_t blocks = 0;     // in use, in all heaps
    std::size_t heapBytes = 0;  // in those blocks

    Usage() {
        ::TlsFree(slot);
        // One by one: Wine does not tell their number.
        for (ULONG_PTR value = 4; value < 0x2000; value += 4) {
            DWORD flags = 0;
            handles += ::GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != FALSE;
        }
        std::array<HANDLE, 64> heaps{};
        const DWORD count = ::GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
        for (DWORD i = 0; i < count && i < heaps.size(); ++i) {
            ::HeapLock(heaps[i]);
            for (PROCESS_HEAP_ENTRY entry{}; ::HeapWalk(heaps[i], &entry);) {
                const bool isBusy = (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
                blocks += isBusy ? 1 : 0;
                heapBytes += isBusy ? entry.cbData : 0;
            }
            ::HeapUnlock(heaps[i]);
        }
    }
};

// Repeats a piece of work and sees what a round of it keeps, on average. The first rounds may fill caches of
// the system.
void expectKept(std::size_t rounds, std::size_t blocks, std::size_t heapBytes,
                const std::function<void()>& work) {
    for (int i = 0; i < 10; ++i)
        work();
    const Usage before;
    for (std::size_t i = 0; i < rounds; ++i)
        work();
    const Usage after;
    // What the system itself keeps now and then is far less than once a round.
    EXPECT_LE(after.handles, before.handles + 2);
    EXPECT_EQ(after.slot, before.slot);
    EXPECT_LE(after.blocks, before.blocks + rounds * blocks + rounds / 2);
    // A cache may grow once; what is lost each time shows in the blocks.
    EXPECT_LE(after.heapBytes, before.heapBytes + rounds * (heapBytes + 16) + 0x8000);
}

// A little of everything that loads something: type information, error information, a site, the list of
// trusted sites, and a call that ends on another thread. The object that is called back has no use for that,
// and is let go of.
void useOnce(const Component& component) {
    Corvane::FakeHost host;
    host.answers = {{Corvane::Step::browserService, E_NOINTERFACE}};
    host.href = TrustedPage::address;
    const auto object = component.create<IBinaryObject>(__uuidof(BinaryObject));
    EXPECT_EQ(LateCall(*object, 2, {variantOf(VT_I4, 0)}).hr, DISP_E_EXCEPTION);
    const auto service = component.create<IBinaryObjectService>(__uuidof(BinaryObjectService));
    EXPECT_EQ(service.query<IObjectWithSite>()->SetSite(host.site()), S_OK);
    EXPECT_EQ(service->GetCrc32Async(object.get(), 0, object.get()), S_OK);
    EXPECT_TRUE(soon([&] { return referencesOf(*object) == 1; }));
}

// A C++ runtime that is linked into a DLL keeps a few small blocks of its streams and mutexes at each
// unloading.
TEST(LifetimeTest, LoadedAndFreedAHundredTimes) {
    // Stays loaded with all that it needs, so that what the system's libraries keep does not count.
    ASSERT_TRUE(::LoadLibraryW(L"cryptui.dll"));
    const Corvane::Test::Apartment apartment(COINIT_MULTITHREADED);
    const TrustedPage page;
    // Failures ask for the ProgID, and Wine's 32-bit half loses a handle where there is none.
    ASSERT_EQ(Component().registerServer(), S_OK);
    expectKept(100, 20, 3000, [] {
        const Component component;
        useOnce(component);
        EXPECT_TRUE(soon([&] { return component.canUnload() == S_OK; }));
    });
    EXPECT_TRUE(soon([] { return !::GetModuleHandleW(L"VetrelCorvane2.dll"); }));
}

class LifetimesTest : public ComponentTest {};

TEST_F(LifetimesTest, WhatKeepsTheComponent) {
    auto factory = component_.factory(__uuidof(BinaryObject));
    EXPECT_EQ(component_.canUnload(), S_FALSE) << "a factory keeps it";
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    factory.reset();
    EXPECT_EQ(component_.canUnload(), S_FALSE) << "a lock keeps it";
    component_.factory(__uuidof(BinaryObject))->LockServer(FALSE);
    EXPECT_EQ(component_.canUnload(), S_OK);
    const auto object = component_.create<IBinaryObject>(__uuidof(BinaryObject));
    EXPECT_EQ(component_.canUnload(), S_FALSE) << "an object keeps it";
}

// Each way through a method, the failing ones included.
TEST_F(LifetimesTest, CallsKeepNothing) {
    ASSERT_EQ(component_.registerServer(), S_OK);
    const auto maker = service();
    const auto object = bytes(L"010203");
    // As no careful caller passes it.
    auto* const mistaken = static_cast<IBinaryObject*>(static_cast<void*>(maker.get()));
    expectKept(200, 0, 0, [&] {
        ComPtr<IBinaryObject> made;
        Bstr text;
        VARIANT_BOOL equal = VARIANT_FALSE;
        EXPECT_EQ(maker->BinaryObjectFromString(Bstr(L"текст").get(), CP_UTF8, made.put()), S_OK);
        EXPECT_EQ(made->Equals(object.get(), &equal), S_OK);
        EXPECT_EQ(made->ToString(CP_UTF8, text.put()), S_OK);
        EXPECT_EQ(LateCall(*object, 8, {variantOf(VT_I4, 0), variantOf(VT_I4, 3)}).hr, S_OK);
        EXPECT_NE(object->ToString(99999, text.put()), S_OK);
        EXPECT_NE(object->Equals(nullptr, &equal), S_OK);
        EXPECT_EQ(object->Equals(mistaken, &equal), E_NOINTERFACE);
        EXPECT_NE(maker->BinaryObjectFromFile(Bstr(L"no such file").get(), made.put()), S_OK);
        ::SetErrorInfo(0, nullptr);
    });
}

// Readers of bytes that another thread lets go of must see all of them or none. Meanwhile references of a
// shared object are counted by all, and objects come and fail.
TEST_F(LifetimesTest, ManyThreadsReadMakeUseAndLetGo) {
    const std::wstring hex = L"0102030405060708";
    const auto shared = bytes(L"00");
    std::atomic<int> wrong{0};
    for (int round = 0; round < 200; ++round) {
        const auto object = bytes(hex);
        const auto readUntilEmpty = [&] {
            const Corvane::Test::Apartment apartment(COINIT_MULTITHREADED);
            for (ULONG size = 1; size != 0;) {
                const ComPtr<IBinaryObject> held(shared.get());
                const auto made = component_.create<IBinaryObject>(__uuidof(BinaryObject));
                wrong += LateCall(*made, 2, {variantOf(VT_I4, 0)}).description().empty();
                Bstr text;
                wrong +=
                    object->ToHexString(text.put()) != S_OK || (text.view() != hex && !text.view().empty());
                wrong += object->get_Size(&size) != S_OK || (size != 0 && size != hex.size() / 2);
            }
        };
        const std::jthread first(readUntilEmpty);
        const std::jthread second(readUntilEmpty);
        ::Sleep(round % 10 == 0 ? 1 : 0);
        EXPECT_EQ(object->Reset(), S_OK);
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(referencesOf(*shared), 1U);
}

}  // namespace
}  // namespace robustness
