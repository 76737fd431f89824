// The smart-card service with readers from a table: a section of the settings for each reader's name, with
// "protocol" (0 or 1), "atr" (without it the reader is told to be empty) and an answer for each command, both
// in hexadecimal (others are answered 6D00). In the section "service": fail (settings.h). Each call goes into
// the log with what it returned. How long an answer is nobody is told beforehand: the question fails, as
// pcsc-lite has it, or is answered with nothing, by turns.
#include "settings.h"

#include <winscard.h>

#include <algorithm>
#include <cwchar>
#include <functional>
#include <utility>

namespace {

using namespace Corvane::Platform;

// Of the context and of the card.
constexpr ULONG_PTR theHandle = 0x11;
std::wstring reader;

LONG call(const char* name, const std::string& what, const std::function<LONG()>& body = {}) {
    return logged<LONG>(L"service", name, what, [&] { return body ? body() : SCARD_S_SUCCESS; });
}

template <class Items, class Unit>
LONG give(const Items& items, Unit* out, DWORD* size) {
    const DWORD room = std::exchange(*size, static_cast<DWORD>(items.size()));
    if (out && room < items.size())
        return SCARD_E_INSUFFICIENT_BUFFER;
    if (out)
        std::ranges::copy(items, out);
    return SCARD_S_SUCCESS;
}

DWORD protocol() {
    return setting(reader.c_str(), L"protocol", L"1") == L"0" ? SCARD_PROTOCOL_T0 : SCARD_PROTOCOL_T1;
}

}  // namespace

LONG WINAPI SCardEstablishContext(DWORD scope, LPCVOID, LPCVOID, LPSCARDCONTEXT context) {
    return call("SCardEstablishContext", " " + std::to_string(scope), [&] {
        *context = theHandle;
        return SCARD_S_SUCCESS;
    });
}

LONG WINAPI SCardReleaseContext(SCARDCONTEXT) {
    return call("SCardReleaseContext", "");
}

LONG WINAPI SCardListReadersW(SCARDCONTEXT, LPCWSTR, LPWSTR mszReaders, LPDWORD pcchReaders) {
    return call("SCardListReaders", "", [&] {
        wchar_t sections[4096];
        ::GetPrivateProfileSectionNamesW(sections, 4096, besideModule(L".ini").c_str());
        std::wstring names;
        for (const wchar_t* name = sections; *name; name += std::wcslen(name) + 1)
            if (name != std::wstring_view(L"service"))
                names += std::wstring(name) + L'\0';
        return give(names + L'\0', mszReaders, pcchReaders);
    });
}

LONG WINAPI SCardGetStatusChangeW(SCARDCONTEXT, DWORD, LPSCARD_READERSTATEW rgReaderStates, DWORD cReaders) {
    return call("SCardGetStatusChange", "", [&] {
        for (SCARD_READERSTATEW* each = rgReaderStates; each != rgReaderStates + cReaders; ++each) {
            const Bytes atr = fromHex(narrow(setting(each->szReader, L"atr")));
            each->cbAtr = sizeof each->rgbAtr;
            each->dwEventState =
                SCARD_STATE_CHANGED | (atr.empty() ? SCARD_STATE_EMPTY : SCARD_STATE_PRESENT);
            give(atr, each->rgbAtr, &each->cbAtr);
        }
        return SCARD_S_SUCCESS;
    });
}

LONG WINAPI SCardConnectW(SCARDCONTEXT, LPCWSTR szReader, DWORD dwShareMode, DWORD dwPreferredProtocols,
                          LPSCARDHANDLE phCard, LPDWORD pdwActiveProtocol) {
    const std::string what = " " + narrow(szReader) + " " + std::to_string(dwShareMode) + " " +
                             std::to_string(dwPreferredProtocols);
    return call("SCardConnect", what, [&] {
        reader = szReader;
        *phCard = theHandle;
        *pdwActiveProtocol = protocol();
        return SCARD_S_SUCCESS;
    });
}

LONG WINAPI SCardReconnect(SCARDHANDLE, DWORD, DWORD, DWORD, LPDWORD pdwActiveProtocol) {
    *pdwActiveProtocol = protocol();
    return call("SCardReconnect", "");
}

LONG WINAPI SCardDisconnect(SCARDHANDLE, DWORD disposition) {
    return call("SCardDisconnect", " " + std::to_string(disposition));
}

LONG WINAPI SCardBeginTransaction(SCARDHANDLE) {
    return call("SCardBeginTransaction", "");
}

LONG WINAPI SCardEndTransaction(SCARDHANDLE, DWORD) {
    return call("SCardEndTransaction", "");
}

LONG WINAPI SCardTransmit(SCARDHANDLE, LPCSCARD_IO_REQUEST pioSendPci, LPCBYTE pbSendBuffer,
                          DWORD cbSendLength, LPSCARD_IO_REQUEST, LPBYTE pbRecvBuffer,
                          LPDWORD pcbRecvLength) {
    static bool isKnown;
    if (!pbRecvBuffer)
        return (isKnown = !isKnown) ? SCARD_S_SUCCESS : SCARD_E_INVALID_PARAMETER;
    const std::string digits = hex({pbSendBuffer, cbSendLength});
    return call("SCardTransmit", " T" + std::to_string(pioSendPci->dwProtocol - 1) + " " + digits, [&] {
        const std::wstring key(digits.begin(), digits.end());
        return give(fromHex(narrow(setting(reader.c_str(), key.c_str(), L"6D00"))), pbRecvBuffer,
                    pcbRecvLength);
    });
}
