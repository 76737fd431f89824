// Removable disks, which the CSP uses as key carriers by the name FAT12.
#pragma once

#include "token/discovery/key_carrier.h"
#include "token/discovery/token.h"

#include <utility>
#include <vector>

namespace Corvane::detail {

// Those with a medium in them, where the CSP is set up for them: the disk as a token whose slot is "FAT12_E",
// and as a carrier.
std::vector<std::pair<Token, KeyCarrier>> getActiveFat12Readers();

}  // namespace Corvane::detail
