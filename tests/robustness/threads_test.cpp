// One object used by several threads, and many threads with objects of their own.
#include "component.h"
#include "late_call.h"

#include <thread>

namespace robustness {
namespace {

class ThreadsTest : public ComponentTest {};

// A reader must see all of the bytes or none of them.
void readUntilEmpty(IBinaryObject& object, const std::wstring& hex, std::atomic<int>& wrong) {
    for (ULONG size = 1; size != 0;) {
        Bstr text;
        unsigned char byte = 0;
        const HRESULT read = object.GetByte(1, &byte);
        if (read == S_OK ? byte != 2 : read != static_cast<HRESULT>(0x80040212))
            ++wrong;
        if (object.ToHexString(text.put()) != S_OK || (text.view() != hex && !text.view().empty()))
            ++wrong;
        if (object.get_Size(&size) != S_OK || (size != 0 && size != hex.size() / 2))
            ++wrong;
    }
}

TEST_F(ThreadsTest, ReadsWhileAnotherThreadResets) {
    const std::wstring hex = L"0102030405060708";
    std::atomic<int> wrong{0};
    for (int round = 0; round < 40; ++round) {
        const auto object = bytes(hex);
        std::thread first([&] { readUntilEmpty(*object, hex, wrong); });
        std::thread second([&] { readUntilEmpty(*object, hex, wrong); });
        ::Sleep(round % 10 == 0 ? 1 : 0);
        EXPECT_EQ(object->Reset(), S_OK);
        first.join();
        second.join();
    }
    EXPECT_EQ(wrong, 0);
}

TEST_F(ThreadsTest, ManyThreadsMakeUseAndLetGo) {
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
            for (int round = 0; round < 500; ++round) {
                const auto object = component_.create<IBinaryObject>(__uuidof(BinaryObject));
                const LateCall size(*object, 1, {});
                const LateCall failure(*object, 2, {variantOf(VT_I4, 0)});
                if (size.hr != S_OK || failure.hr != DISP_E_EXCEPTION || !failure.exception.bstrDescription)
                    ++wrong;
            }
            ::CoUninitialize();
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

// References counted by two threads at once still end at zero.
TEST_F(ThreadsTest, ReferencesOfOneObject) {
    const auto object = bytes(L"00");
    const auto count = [&] {
        for (int i = 0; i < 100000; ++i) {
            object->AddRef();
            object->Release();
        }
    };
    std::thread other(count);
    count();
    other.join();
    EXPECT_EQ(referencesOf(*object), 1U);
}

}  // namespace
}  // namespace robustness
