// Key carriers as the settings of the CSP know them: what kind of memory for containers a token is.
#pragma once

#include "token/discovery/token.h"

#include <optional>
#include <string>

namespace Corvane {

struct KeyCarrier {
    std::wstring type;      // the name of its key in the settings: "RutokenECP", "FAT12"
    std::wstring name;      // for people
    std::wstring nickname;  // of the reader, as paths of containers have it
    std::wstring media;     // the number of this very medium
    bool gost = false;      // whether it signs by itself, with keys that never leave it
    std::optional<unsigned> maxContainerCount;
};

// None where the CSP is not installed, or does not know this kind of token.
std::optional<KeyCarrier> findKeyCarrier(const Token& token);

}  // namespace Corvane
