// PINs as tokens take them.
#pragma once

#include "core/secret.h"

#include <string_view>

namespace Corvane::detail {

// In UTF-8. No copy stays anywhere else. Throws Win32Exception E_WIDE_TO_ANSI.
SecretNarrowText pinText(std::wstring_view pin);

}  // namespace Corvane::detail
