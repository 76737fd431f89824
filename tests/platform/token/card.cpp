// The smart-card service with readers from a table: a section of the settings for each reader's name, with
// "protocol" (0 or 1), "atr" (without it the reader is told to be empty) and an answer for each command, both
// in hexadecimal (others are answered 6D00). In the section "service": fail (settings.h), length=no (the
// question for the length of an answer fails, as pcsc-lite has it) or length=0 (it tells nothing). Each call
// goes into the log with what it returned.
#include "settings.h"

#include <winscard.h>

#include <cstdio>

namespace {

using namespace Corvane::Platform;

constexpr SCARDCONTEXT theContext = 0x11;
constexpr SCARDHANDLE theCard = 0x22;
std::wstring reader;

template <class Body>
LONG call(const char* name, const std::string& what, Body body) {
    auto status = static_cast<LONG>(plannedFailure(L"service", name));
    if (status == SCARD_S_SUCCESS)
        status = body();
    char result[20];
    std::snprintf(result, sizeof result, " 0x%lx", static_cast<unsigned long>(status));
    log(name + what + result);
    return status;
}

std::string hex(const BYTE* bytes, DWORD size) {
    std::string text;
    for (DWORD i = 0; i < size; ++i) {
        text += "0123456789ABCDEF"[bytes[i] >> 4];
        text += "0123456789ABCDEF"[bytes[i] & 15];
    }
    return text;
}

LONG give(const std::wstring& digits, BYTE* out, DWORD* size) {
    const DWORD room = *size;
    *size = static_cast<DWORD>(digits.size() / 2);
    if (!out && setting(L"service", L"length") == L"0")
        *size = 0;
    if (!out)
        return setting(L"service", L"length") == L"no" ? SCARD_E_INVALID_PARAMETER : SCARD_S_SUCCESS;
    if (room < *size)
        return SCARD_E_INSUFFICIENT_BUFFER;
    for (DWORD i = 0; i < *size; ++i)
        out[i] = static_cast<BYTE>(std::stoul(digits.substr(std::size_t{2} * i, 2), nullptr, 16));
    return SCARD_S_SUCCESS;
}

DWORD protocolOf(const std::wstring& name) {
    return setting(name.c_str(), L"protocol", L"1") == L"0" ? SCARD_PROTOCOL_T0 : SCARD_PROTOCOL_T1;
}

}  // namespace

LONG WINAPI SCardEstablishContext(DWORD scope, LPCVOID, LPCVOID, LPSCARDCONTEXT context) {
    return call("SCardEstablishContext", " " + std::to_string(scope), [&] {
        *context = theContext;
        return SCARD_S_SUCCESS;
    });
}

LONG WINAPI SCardReleaseContext(SCARDCONTEXT context) {
    return call("SCardReleaseContext", "",
                [&] { return context == theContext ? SCARD_S_SUCCESS : SCARD_E_INVALID_HANDLE; });
}

LONG WINAPI SCardListReadersW(SCARDCONTEXT hContext, LPCWSTR mszGroups, LPWSTR mszReaders,
                              LPDWORD pcchReaders) {
    return call("SCardListReaders", "", [&]() -> LONG {
        if (hContext != theContext || mszGroups)
            return SCARD_E_INVALID_HANDLE;
        std::wstring names;
        for (const std::wstring& each : sections())
            names += each == L"service" ? L"" : each + L'\0';
        if (names.empty())
            return static_cast<LONG>(SCARD_E_NO_READERS_AVAILABLE);
        names += L'\0';
        const DWORD room = *pcchReaders;
        *pcchReaders = static_cast<DWORD>(names.size());
        if (mszReaders && room < names.size())
            return SCARD_E_INSUFFICIENT_BUFFER;
        if (mszReaders)
            names.copy(mszReaders, names.size());
        return SCARD_S_SUCCESS;
    });
}

LONG WINAPI SCardGetStatusChangeW(SCARDCONTEXT hContext, DWORD, LPSCARD_READERSTATEW rgReaderStates,
                                  DWORD cReaders) {
    return call("SCardGetStatusChange", "", [&]() -> LONG {
        for (SCARD_READERSTATEW* each = rgReaderStates; each != rgReaderStates + cReaders; ++each) {
            const std::wstring atr = setting(each->szReader, L"atr");
            each->cbAtr = sizeof each->rgbAtr;
            each->dwEventState =
                SCARD_STATE_CHANGED | (atr.empty() ? SCARD_STATE_EMPTY : SCARD_STATE_PRESENT);
            give(atr, each->rgbAtr, &each->cbAtr);
        }
        return hContext == theContext ? SCARD_S_SUCCESS : SCARD_E_INVALID_HANDLE;
    });
}

LONG WINAPI SCardConnectW(SCARDCONTEXT hContext, LPCWSTR szReader, DWORD dwShareMode,
                          DWORD dwPreferredProtocols, LPSCARDHANDLE phCard, LPDWORD pdwActiveProtocol) {
    const std::string what = " " + narrow(szReader) + " " + std::to_string(dwShareMode) + " " +
                             std::to_string(dwPreferredProtocols);
    return call("SCardConnect", what, [&]() -> LONG {
        if (hContext != theContext)
            return SCARD_E_INVALID_HANDLE;
        for (const std::wstring& each : sections()) {
            if (each == szReader && each != L"service") {
                reader = each;
                *phCard = theCard;
                *pdwActiveProtocol = protocolOf(each);
                return SCARD_S_SUCCESS;
            }
        }
        return SCARD_E_UNKNOWN_READER;
    });
}

LONG WINAPI SCardReconnect(SCARDHANDLE card, DWORD, DWORD, DWORD, LPDWORD protocol) {
    return call("SCardReconnect", "", [&]() -> LONG {
        *protocol = protocolOf(reader);
        return card == theCard ? SCARD_S_SUCCESS : SCARD_E_INVALID_HANDLE;
    });
}

LONG WINAPI SCardDisconnect(SCARDHANDLE card, DWORD disposition) {
    return call("SCardDisconnect", " " + std::to_string(disposition),
                [&] { return card == theCard ? SCARD_S_SUCCESS : SCARD_E_INVALID_HANDLE; });
}

LONG WINAPI SCardBeginTransaction(SCARDHANDLE card) {
    return call("SCardBeginTransaction", "",
                [&] { return card == theCard ? SCARD_S_SUCCESS : SCARD_E_INVALID_HANDLE; });
}

LONG WINAPI SCardEndTransaction(SCARDHANDLE card, DWORD) {
    return call("SCardEndTransaction", "",
                [&] { return card == theCard ? SCARD_S_SUCCESS : SCARD_E_INVALID_HANDLE; });
}

LONG WINAPI SCardTransmit(SCARDHANDLE hCard, LPCSCARD_IO_REQUEST pioSendPci, LPCBYTE pbSendBuffer,
                          DWORD cbSendLength, LPSCARD_IO_REQUEST pioRecvPci, LPBYTE pbRecvBuffer,
                          LPDWORD pcbRecvLength) {
    const std::string digits = hex(pbSendBuffer, cbSendLength);
    const std::string what =
        " T" + std::to_string(pioSendPci->dwProtocol - 1) + " " + digits + (pbRecvBuffer ? "" : " length");
    return call("SCardTransmit", what, [&]() -> LONG {
        if (hCard != theCard)
            return SCARD_E_INVALID_HANDLE;
        if (pioSendPci->dwProtocol != protocolOf(reader) || pioSendPci->cbPciLength != sizeof *pioSendPci ||
            pioRecvPci)
            return SCARD_E_PROTO_MISMATCH;
        const std::wstring key(digits.begin(), digits.end());
        return give(setting(reader.c_str(), key.c_str(), L"6D00"), pbRecvBuffer, pcbRecvLength);
    });
}
