// Commands to the card in a terminal.
#pragma once

#include "token/card/apdu.h"
#include "token/card/certified_answer.h"
#include "token/card/terminal.h"

#include <string_view>

namespace Corvane {

// Over a terminal that is connected and outlives it. For one thread.
class SmartCard {
public:
    explicit SmartCard(Terminal& terminal) noexcept : terminal_(terminal) {}

    // The whole answer, status bytes included. A card may have to carry out the command twice: once for the
    // length of its answer. Throws Win32Exception E_SMART_CARD.
    Bytes transmit(const Apdu& apdu) const;

    // Whether the token in this reader is one of a certified model; asked in the way of its maker, whom the
    // reader's name tells. What fails is logged, and the answer is unknown then.
    Certified certified(std::wstring_view readerName) const;

private:
    Bytes getData(const Apdu& command) const;
    Certified askRutoken() const;
    Certified askJaCarta() const;

    Terminal& terminal_;
};

}  // namespace Corvane
