// The smart-card service and one of its readers.
#pragma once

#include "core/errors.h"
#include "core/handle.h"

#include <windows.h>

#include <winscard.h>

#include <string>

namespace Corvane {

// Goes no further than to the log.
inline constexpr ErrorDescriptor E_SMART_CARD{0, "E_SMART_CARD", nullptr};

namespace detail {

struct CardContextTraits {
    using Type = SCARDCONTEXT;
    static Type invalid() noexcept { return 0; }
    static void close(Type context) noexcept { ::SCardReleaseContext(context); }
};

struct CardTraits {
    using Type = SCARDHANDLE;
    static Type invalid() noexcept { return 0; }
    static void close(Type card) noexcept { ::SCardDisconnect(card, SCARD_LEAVE_CARD); }
};

}  // namespace detail

// Its end disconnects the card, which keeps its state, and releases the context. What fails throws
// Win32Exception E_SMART_CARD with the service's number; the call stands in the log. For one thread.
class Terminal {
public:
    void open();
    // The card in the reader, shared with others; what was connected before is disconnected.
    void connect(const std::wstring& readerName);
    // The same card, after somebody else has reset it.
    void reconnect();

    SCARDHANDLE card() const noexcept { return card_.get(); }
    // SCARD_PROTOCOL_T0 or SCARD_PROTOCOL_T1.
    DWORD protocol() const noexcept { return protocol_; }

private:
    UniqueHandle<detail::CardContextTraits> context_;
    UniqueHandle<detail::CardTraits> card_;
    DWORD protocol_ = 0;
};

}  // namespace Corvane
