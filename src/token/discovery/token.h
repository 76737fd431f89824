// What is known of a token from its PKCS#11 driver.
#pragma once

#include "token/cryptoki/cryptoki.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Corvane {

struct Token {
    std::wstring slot;  // the description of its slot, which is its reader's name
    std::wstring manufacturer;
    std::wstring model;
    std::wstring serialNumber;
    // In bytes; none where the token does not tell.
    std::optional<std::uint64_t> totalMemory;
    std::optional<std::uint64_t> freeMemory;
};

Token makeToken(const CK_SLOT_INFO& slot, const CK_TOKEN_INFO& token);

}  // namespace Corvane
