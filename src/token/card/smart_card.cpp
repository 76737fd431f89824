#include "token/card/smart_card.h"

#include "core/check.h"
#include "core/exception_text.h"
#include "core/log.h"

#include <algorithm>
#include <exception>

namespace Corvane {
namespace {

constexpr wchar_t transmitContext[] = L"Corvane::SmartCard::transmit";
constexpr wchar_t certifiedContext[] = L"Corvane::SmartCard::certified";

// The longest short answer with its status.
constexpr DWORD longestAnswer = 258;

// Keeps others off the card between a command and the one that builds on it. Libraries that stand in for the
// system's, as remote desktops bring them, do not all know transactions; the commands go out all the same
// then.
class Transaction {
public:
    explicit Transaction(SCARDHANDLE card) : card_(card) {
        if (const auto begin = find<decltype(::SCardBeginTransaction)>("SCardBeginTransaction"))
            checkStatus(begin(card), E_SMART_CARD, L"SCardBeginTransaction");
    }
    ~Transaction() {
        if (const auto end = find<decltype(::SCardEndTransaction)>("SCardEndTransaction"))
            end(card_, SCARD_LEAVE_CARD);
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

private:
    template <class Function>
    static Function* find(const char* name) noexcept {
        const FARPROC address = ::GetProcAddress(::GetModuleHandleW(L"winscard.dll"), name);
        return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(address));
    }

    SCARDHANDLE card_;
};

LONG transmitTo(const Terminal& terminal, const Bytes& command, BYTE* answer, DWORD* size) noexcept {
    const DWORD protocol = terminal.protocol() == SCARD_PROTOCOL_T0 ? SCARD_PROTOCOL_T0 : SCARD_PROTOCOL_T1;
    const SCARD_IO_REQUEST control{protocol, sizeof control};
    return ::SCardTransmit(terminal.card(), &control, command.data(), static_cast<DWORD>(command.size()),
                           nullptr, answer, size);
}

// Asks for the length first, which not every service knows, and which some tell as 0.
LONG exchange(const Terminal& terminal, const Bytes& command, Bytes& answer) {
    DWORD size = 0;
    if (transmitTo(terminal, command, nullptr, &size) != SCARD_S_SUCCESS || size == 0)
        size = longestAnswer;
    answer.resize(size);
    const LONG status = transmitTo(terminal, command, answer.data(), &size);
    answer.resize(status == SCARD_S_SUCCESS ? std::min<std::size_t>(size, answer.size()) : 0);
    return status;
}

}  // namespace

Bytes SmartCard::transmit(const Apdu& apdu) const {
    const Bytes command = apdu.serialize();
    Bytes answer;
    LONG status = exchange(terminal_, command, answer);
    if (status == SCARD_W_RESET_CARD) {
        terminal_.reconnect();
        status = exchange(terminal_, command, answer);
    }
    if (status != SCARD_S_SUCCESS) {
        const auto error = static_cast<std::uint32_t>(status);
        writeLog(LogLevel::error, transmitContext, L"SCardTransmit: ", numberForLog(error));
        throw Win32Exception(E_SMART_CARD, error);
    }
    writeLog(LogLevel::debug, transmitContext, L"[in] instruction: ", unsigned{apdu.ins}, L", answered: ",
             answer.size());
    return answer;
}

// At T=0 a card says first how much it has, or how much is to be asked for (ISO/IEC 7816-3, 12.2.1).
Bytes SmartCard::getData(const Apdu& command) const {
    constexpr std::uint8_t moreAvailable = 0x61;
    constexpr std::uint8_t wrongLength = 0x6C;
    constexpr std::uint8_t getResponse = 0xC0;
    Bytes answer = transmit(command);
    if (answer.size() != 2 || terminal_.protocol() != SCARD_PROTOCOL_T0)
        return answer;
    if (answer[0] == moreAvailable)
        return transmit({command.cla, getResponse, 0, 0, {}, answer[1]});
    if (answer[0] == wrongLength)
        return transmit({command.cla, command.ins, command.p1, command.p2, command.data, answer[1]});
    return answer;
}

Certified SmartCard::askRutoken() const {
    return readRutokenAnswer(getData({0x00, 0xCA, 0x01, 0x89, {}, 0x0E}));
}

Certified SmartCard::askJaCarta() const {
    const Transaction transaction(terminal_.card());
    transmit({0x00, 0xA4, 0x04, 0x00, {0xA0, 0x00, 0x00, 0x01, 0x51, 0x00, 0x00}, 0x07});
    return readJaCartaAnswer(getData({0x00, 0xCA, 0x00, 0x01, {}, 0x00}));
}

Certified SmartCard::certified(std::wstring_view readerName) const {
    try {
        if (readerName.starts_with(L"Aktiv"))
            return askRutoken();
        if (readerName.starts_with(L"ARDS"))
            return askJaCarta();
    } catch (const std::exception& exception) {
        writeLog(LogLevel::error, certifiedContext, textOf(exception));
    }
    return Certified::unknown;
}

}  // namespace Corvane
