#include "core/check.h"
#include "core/handles.h"
#include "support.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

TEST(SystemException, DetailsAreTheNumberAndTheSystemsText) {
    // FormatMessageW's own answer, asked for in another way than the code does, without its line end.
    const auto systemsOwnText = [](HRESULT number) {
        wchar_t text[1024] = L"";
        const DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                              nullptr, static_cast<DWORD>(number), 0, text, 1024, nullptr);
        EXPECT_EQ(std::wstring_view(text).find(L'\r'), length - 2);
        return std::wstring(text, length - 2);
    };
    EXPECT_EQ(fullMessage(Win32Exception(E_CREATE_FILE, ERROR_ACCESS_DENIED)),
              L"[28] Ошибка при открытии файла (0x5:" + systemsOwnText(ERROR_ACCESS_DENIED) + L")");
    EXPECT_EQ(fullMessage(ComException(E_COM_INVOKE, E_INVALIDARG)),
              L"[901] Ошибка вызова метода класса COM компоненты (0x80070057:" +
                  systemsOwnText(E_INVALIDARG) + L")");
    EXPECT_EQ(fullMessage(Win32Exception(E_CREATE_FILE, 0x2FFFFFFF)), L"[28] Ошибка при открытии файла")
        << "a number without a text";
    EXPECT_EQ(fullMessage(CommDlgException(E_COMMON_DLG, 0x3002)),
              L"[200] Ошибка при открытии диалога (0x3002)");
}

TEST(Check, TakesTheLastErrorOfTheFailedCall) {
    ::SetLastError(ERROR_DISK_FULL);
    EXPECT_EQ(failureOf([] { checkWin32(FALSE, E_FILE_WRITE, L"WriteFile"); }),
              Failure(E_FILE_WRITE.code, ERROR_DISK_FULL));
    EXPECT_EQ(failureOf([] { checkStatus(ERROR_ACCESS_DENIED, E_REG_KEY_CREATE, L"RegCreateKeyExW"); }),
              Failure(E_REG_KEY_CREATE.code, ERROR_ACCESS_DENIED));
    EXPECT_THROW(checkCrypto(FALSE, E_CRYPTO_SIGN, L"CryptSignMessage"), CryptoException);
    EXPECT_THROW(checkHresult(E_FAIL, E_COM_INVOKE, L"Invoke"), ComException);
    EXPECT_NO_THROW(checkHresult(S_FALSE, E_COM_INVOKE, L"Invoke"));
}

TEST(Handle, ClosingKeepsTheLastError) {
    FileHandle file(::CreateFileW(L"NUL", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(file);
    const HANDLE raw = file.get();
    ::SetLastError(ERROR_DISK_FULL);
    file.reset();
    EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_DISK_FULL));
    DWORD flags = 0;
    EXPECT_FALSE(::GetHandleInformation(raw, &flags)) << "the handle is still open";
}

}  // namespace
