#include "com/frame.h"

#include "com/arguments.h"
#include "com/binary_object.h"
#include "core/system_exception.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>

using namespace Corvane;
using namespace Corvane::Com;

namespace {

constexpr ErrorDescriptor contextOnly{0, "SetSite.Context", nullptr};
constexpr ErrorDescriptor textless{0, "no text", nullptr};

// Description of the thread's error information, which is consumed; nothing when there is none.
std::optional<std::wstring> takeDescription() {
    ComPtr<IErrorInfo> info;
    if (::GetErrorInfo(0, info.put()) != S_OK)
        return std::nullopt;
    Bstr text;
    info->GetDescription(text.put());
    return std::wstring(text.view());
}

struct FrameCase {
    const char* name;
    std::function<void()> body;
    HRESULT hr;
    std::optional<std::wstring> description;
};

TEST(Frame, EveryRungOfTheLadder) {
    const FrameCase cases[] = {
        {"success", [] {}, S_OK, std::nullopt},
        {"own error", [] { throw Exception(E_BINARY_OUT_OF_RANGE); }, static_cast<HRESULT>(0x80040212),
         L"[18] Байта с указанным индексом не существует"},
        {"own error without number", [] { throw Exception(contextOnly); }, static_cast<HRESULT>(0x80040200),
         L"SetSite.Context"},
        {"own error with a system number", [] { throw CommDlgException(E_COMMON_DLG, 0x3002); },
         static_cast<HRESULT>(0x800402C8), L"[200] Ошибка при открытии диалога (0x3002)"},
        {"failed COM call", [] { throw ComException(E_COM_INVOKE, E_NOTIMPL); }, E_NOTIMPL,
         L"Ошибка вызова метода класса COM компоненты"},
        {"failed COM call without text", [] { throw ComException(textless, E_NOTIMPL); }, E_NOTIMPL, L""},
        {"standard exception", [] { throw std::out_of_range("vector"); }, static_cast<HRESULT>(0x800405E8),
         L"vector"},
        {"anything else", [] { throw 42; }, static_cast<HRESULT>(0x800405E8), L"Неизвестная ошибка ActiveX"},
        {"out of memory", [] { throw std::bad_alloc(); }, E_OUTOFMEMORY, std::nullopt},
        {"silent", [] { throw SilentFailure{E_NOINTERFACE}; }, E_NOINTERFACE, std::nullopt},
    };
    for (const FrameCase& c : cases) {
        ::SetErrorInfo(0, nullptr);
        EXPECT_EQ(frame(CLSID_NULL, L"CTest::Method", c.body), c.hr) << c.name;
        EXPECT_EQ(takeDescription(), c.description) << c.name;
    }
}

TEST(Frame, RunningOutOfMemoryKeepsEarlierErrorInformation) {
    reportError(CLSID_NULL, L"earlier", E_FAIL);
    EXPECT_EQ(frame(CLSID_NULL, L"CTest::Method", [] { throw std::bad_alloc(); }), E_OUTOFMEMORY);
    EXPECT_EQ(takeDescription(), L"earlier");
}

// A host's own object; under GUID_NULL it answers what the test tells it to.
class ForeignObject : public IUnknown {
public:
    explicit ForeignObject(HRESULT answer) : answer_(answer) {}
    virtual ~ForeignObject() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return answer_;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

private:
    HRESULT answer_;
};

TEST(Resolve, OnlyOurOwnObjectsOfTheRightKind) {
    ForeignObject refusing(E_ACCESSDENIED);
    ForeignObject lying(S_OK);
    const auto ours = makeBinary({1, 2, 3});
    ComPtr<IUnknown> otherInterface;
    ASSERT_EQ(ours->QueryInterface(IID_IObjectSafety, otherInterface.putVoid()), S_OK);

    const auto resolving = [](IUnknown* object) {
        return frame(CLSID_NULL, L"CTest::Method",
                     [&] { EXPECT_EQ(resolve<CBinaryObject>(object)->bytes()->size(), 3u); });
    };
    EXPECT_EQ(resolving(nullptr), E_POINTER);
    EXPECT_EQ(resolving(&refusing), E_ACCESSDENIED) << "the object's own answer";
    EXPECT_EQ(resolving(&lying), E_NOINTERFACE);
    EXPECT_EQ(resolving(static_cast<IBinaryObject*>(ours.get())), S_OK);
    EXPECT_EQ(resolving(otherInterface.get()), S_OK);
}

}  // namespace
