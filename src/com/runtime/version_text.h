// The version of the component as wide text.
#pragma once

#include "core/version.h"

namespace Corvane {

#define CORVANE_WIDE(text) L"" text
inline constexpr wchar_t versionText[] = CORVANE_WIDE(CORVANE_VERSION_TEXT);
inline constexpr wchar_t versionShortText[] = CORVANE_WIDE(CORVANE_VERSION_SHORT_TEXT);
#undef CORVANE_WIDE

}  // namespace Corvane
