// Commands for smart cards (ISO/IEC 7816-4, 5.1), the short form. Pure, any thread.
#pragma once

#include "binary/bytes.h"

#include <cstdint>

namespace Corvane {

struct Apdu {
    std::uint8_t cla = 0;
    std::uint8_t ins = 0;
    std::uint8_t p1 = 0;
    std::uint8_t p2 = 0;
    Bytes data;           // at most 255 bytes
    std::uint8_t le = 0;  // how many are expected; 0 for 256

    // Header; the length and the data, where there are any; always the expected length.
    Bytes serialize() const;
};

}  // namespace Corvane
