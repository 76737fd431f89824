#include "com/frame.h"

#include "com/automation.h"
#include "com/ptr.h"
#include "core/system_exception.h"

#include <gtest/gtest.h>

#include <functional>

using namespace Corvane;
using namespace Corvane::Com;

namespace {

constexpr ErrorDescriptor contextOnly{0, "SetSite.Context", nullptr};

// Description of the thread's error information, which is consumed.
std::wstring takeDescription() {
    ComPtr<IErrorInfo> info;
    if (::GetErrorInfo(0, info.put()) != S_OK)
        return L"none";
    Bstr text;
    info->GetDescription(text.put());
    return std::wstring(text.view());
}

TEST(Frame, EveryRungOfTheLadder) {
    const struct {
        const char* name;
        std::function<void()> body;
        unsigned long hr;
        const wchar_t* description;
    } rows[] = {
        {"success", [] {}, S_OK, L"earlier"},
        {"own error", [] { throw Exception(E_BINARY_OUT_OF_RANGE); }, 0x80040212,
         L"[18] Байта с указанным индексом не существует"},
        {"own error without number", [] { throw Exception(contextOnly); }, 0x80040200, L"SetSite.Context"},
        {"own error with a system number", [] { throw CommDlgException(E_COMMON_DLG, 0x3002); }, 0x800402C8,
         L"[200] Ошибка при открытии диалога (0x3002)"},
        {"failed COM call", [] { throw ComException(E_COM_INVOKE, E_NOTIMPL); }, 0x80004001,
         L"Ошибка вызова метода класса COM компоненты"},
        {"failed COM call without text", [] { throw ComException(contextOnly, E_NOTIMPL); }, 0x80004001, L""},
        {"standard exception", [] { throw std::out_of_range("vector"); }, 0x800405E8, L"vector"},
        {"anything else", [] { throw 42; }, 0x800405E8, L"Неизвестная ошибка ActiveX"},
        {"out of memory", [] { throw std::bad_alloc(); }, 0x8007000E, L"earlier"},
        {"silent", [] { throw SilentFailure{E_NOINTERFACE}; }, 0x80004002, L"earlier"},
    };
    for (const auto& row : rows) {
        reportError(CLSID_NULL, L"earlier", E_FAIL);
        EXPECT_EQ(static_cast<unsigned long>(frame(CLSID_NULL, L"CTest::Method", row.body)), row.hr)
            << row.name;
        EXPECT_EQ(takeDescription(), row.description) << row.name;
    }
}

}  // namespace
