#include "token/card/terminal.h"

#include "core/check.h"

namespace Corvane {
namespace {

constexpr DWORD acceptedProtocols = SCARD_PROTOCOL_T0 | SCARD_PROTOCOL_T1;

}  // namespace

void Terminal::open() {
    checkStatus(::SCardEstablishContext(SCARD_SCOPE_SYSTEM, nullptr, nullptr, context_.put()), E_SMART_CARD,
                L"SCardEstablishContext");
}

void Terminal::connect(const std::wstring& readerName) {
    checkStatus(::SCardConnectW(context_.get(), readerName.c_str(), SCARD_SHARE_SHARED, acceptedProtocols,
                                card_.put(), &protocol_),
                E_SMART_CARD, L"SCardConnect");
}

void Terminal::reconnect() {
    checkStatus(
        ::SCardReconnect(card_.get(), SCARD_SHARE_SHARED, acceptedProtocols, SCARD_LEAVE_CARD, &protocol_),
        E_SMART_CARD, L"SCardReconnect");
}

}  // namespace Corvane
