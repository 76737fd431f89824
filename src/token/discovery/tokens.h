// The tokens at this machine, as the drivers of their makers see them.
#pragma once

#include "token/discovery/driver_probe.h"
#include "token/discovery/token.h"

#include <string_view>
#include <vector>

namespace Corvane::detail {

// The files that are asked for, or only their names, in their order.
std::vector<std::wstring> driverNames();

// Asks one driver after the other, each for 15 seconds at most. A token that two of them see is there twice.
// Any thread.
std::vector<Token> getTokens();

// The token on which a key container lies, by the container's path ("\\.\reader\..."); null where it lies on
// none of them. A JaCarta LT shows twins on one reader; its own entry is the one with the containers. Points
// into `tokens`.
const Token* findTokenOf(std::wstring_view containerPath, const std::vector<Token>& tokens) noexcept;

}  // namespace Corvane::detail
