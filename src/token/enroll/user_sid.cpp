#include "token/enroll/user_sid.h"

#include "core/check.h"
#include "core/handles.h"

#include <sddl.h>

namespace Corvane::detail {

std::wstring getUserSid() {
    HANDLE opened = nullptr;
    checkWin32(::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &opened), E_CRYPTO,
               L"OpenProcessToken");
    const FileHandle token(opened);
    // The structure and, behind it, the longest identifier there is.
    alignas(TOKEN_USER) BYTE buffer[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof buffer;
    checkWin32(::GetTokenInformation(token.get(), TokenUser, buffer, size, &size), E_CRYPTO,
               L"GetTokenInformation");
    LocalMemory<wchar_t> text;
    checkWin32(::ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(buffer)->User.Sid, text.put()),
               E_CRYPTO, L"ConvertSidToStringSid");
    return text.get();
}

}  // namespace Corvane::detail
