// The smart-card service with readers from a table: a section of the settings for each reader's name, with
// "protocol" (0 or 1), "atr" (without it the reader is told to be empty) and an answer for each command, both
// in hexadecimal (others are answered 6D00). In the section "service": fail (settings.h), length=no (the
// question for the length of an answer fails, as pcsc-lite has it) or length=0 (it tells nothing). Each call
// goes into the log with what it returned.
#include "settings.h"

#include <winscard.h>

#include <algorithm>

namespace {

using namespace Corvane::Platform;

constexpr SCARDCONTEXT theContext = 0x11;
constexpr SCARDHANDLE theCard = 0x22;
std::wstring reader;

template <class Body>
LONG call(const char* name, const std::string& what, bool isHandleGood, Body body) {
    return logged<LONG>(L"service", name, what,
                        [&]() -> LONG { return isHandleGood ? body() : SCARD_E_INVALID_HANDLE; });
}

LONG cardCall(const char* name, SCARDHANDLE card, const std::string& what = {}) {
    return call(name, what, card == theCard, [] { return SCARD_S_SUCCESS; });
}

std::vector<std::wstring> readers() {
    std::vector<std::wstring> names = sections();
    std::erase(names, L"service");
    return names;
}

LONG give(const std::wstring& digits, BYTE* out, DWORD* size) {
    const Bytes bytes = fromHex(narrow(digits));
    const std::wstring length = setting(L"service", L"length");
    const DWORD room = *size;
    *size = !out && length == L"0" ? 0 : static_cast<DWORD>(bytes.size());
    if (!out)
        return length == L"no" ? SCARD_E_INVALID_PARAMETER : SCARD_S_SUCCESS;
    if (room < *size)
        return SCARD_E_INSUFFICIENT_BUFFER;
    std::ranges::copy(bytes, out);
    return SCARD_S_SUCCESS;
}

DWORD protocolOf(const std::wstring& name) {
    return setting(name.c_str(), L"protocol", L"1") == L"0" ? SCARD_PROTOCOL_T0 : SCARD_PROTOCOL_T1;
}

}  // namespace

LONG WINAPI SCardEstablishContext(DWORD scope, LPCVOID, LPCVOID, LPSCARDCONTEXT context) {
    return call("SCardEstablishContext", " " + std::to_string(scope), true, [&] {
        *context = theContext;
        return SCARD_S_SUCCESS;
    });
}

LONG WINAPI SCardReleaseContext(SCARDCONTEXT context) {
    return call("SCardReleaseContext", "", context == theContext, [] { return SCARD_S_SUCCESS; });
}

LONG WINAPI SCardListReadersW(SCARDCONTEXT hContext, LPCWSTR mszGroups, LPWSTR mszReaders,
                              LPDWORD pcchReaders) {
    return call("SCardListReaders", "", hContext == theContext && !mszGroups, [&]() -> LONG {
        std::wstring names;
        for (const std::wstring& each : readers())
            names += each + L'\0';
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
    return call("SCardGetStatusChange", "", hContext == theContext, [&] {
        for (SCARD_READERSTATEW* each = rgReaderStates; each != rgReaderStates + cReaders; ++each) {
            const std::wstring atr = setting(each->szReader, L"atr");
            each->cbAtr = sizeof each->rgbAtr;
            each->dwEventState =
                SCARD_STATE_CHANGED | (atr.empty() ? SCARD_STATE_EMPTY : SCARD_STATE_PRESENT);
            give(atr, each->rgbAtr, &each->cbAtr);
        }
        return SCARD_S_SUCCESS;
    });
}

LONG WINAPI SCardConnectW(SCARDCONTEXT hContext, LPCWSTR szReader, DWORD dwShareMode,
                          DWORD dwPreferredProtocols, LPSCARDHANDLE phCard, LPDWORD pdwActiveProtocol) {
    const std::string what = " " + narrow(szReader) + " " + std::to_string(dwShareMode) + " " +
                             std::to_string(dwPreferredProtocols);
    return call("SCardConnect", what, hContext == theContext, [&]() -> LONG {
        const std::vector<std::wstring> names = readers();
        if (std::ranges::find(names, szReader) == names.end())
            return SCARD_E_UNKNOWN_READER;
        reader = szReader;
        *phCard = theCard;
        *pdwActiveProtocol = protocolOf(reader);
        return SCARD_S_SUCCESS;
    });
}

LONG WINAPI SCardReconnect(SCARDHANDLE card, DWORD, DWORD, DWORD, LPDWORD protocol) {
    *protocol = protocolOf(reader);
    return cardCall("SCardReconnect", card);
}

LONG WINAPI SCardDisconnect(SCARDHANDLE card, DWORD disposition) {
    return cardCall("SCardDisconnect", card, " " + std::to_string(disposition));
}

LONG WINAPI SCardBeginTransaction(SCARDHANDLE card) {
    return cardCall("SCardBeginTransaction", card);
}

LONG WINAPI SCardEndTransaction(SCARDHANDLE card, DWORD) {
    return cardCall("SCardEndTransaction", card);
}

LONG WINAPI SCardTransmit(SCARDHANDLE hCard, LPCSCARD_IO_REQUEST pioSendPci, LPCBYTE pbSendBuffer,
                          DWORD cbSendLength, LPSCARD_IO_REQUEST pioRecvPci, LPBYTE pbRecvBuffer,
                          LPDWORD pcbRecvLength) {
    const std::string digits = hex({pbSendBuffer, cbSendLength}, "0123456789ABCDEF");
    const std::string what =
        " T" + std::to_string(pioSendPci->dwProtocol - 1) + " " + digits + (pbRecvBuffer ? "" : " length");
    return call("SCardTransmit", what, hCard == theCard, [&]() -> LONG {
        if (pioSendPci->dwProtocol != protocolOf(reader) || pioSendPci->cbPciLength != sizeof *pioSendPci ||
            pioRecvPci)
            return SCARD_E_PROTO_MISMATCH;
        const std::wstring key(digits.begin(), digits.end());
        return give(setting(reader.c_str(), key.c_str(), L"6D00"), pbRecvBuffer, pcbRecvLength);
    });
}
