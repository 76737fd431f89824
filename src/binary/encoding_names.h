// Names of character encodings, as documents declare them and detectors report them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace Corvane {

// Windows identifiers of the encodings that need no table of the system.
inline constexpr std::uint32_t codePageUtf16Le = 1200;
inline constexpr std::uint32_t codePageUtf16Be = 1201;
inline constexpr std::uint32_t codePageUtf32Le = 12000;
inline constexpr std::uint32_t codePageUtf32Be = 12001;
inline constexpr std::uint32_t codePageAscii = 20127;
inline constexpr std::uint32_t codePageUtf8 = 65001;

struct NamedEncoding {
    std::uint32_t codePage;    // identifier of the Windows code page
    bool anyByteOrder{false};  // the name ("UTF-16", "UTF-32") leaves the byte order open
};

// The encoding of a name registered with IANA or in use on Windows; case, "-", "_" and "." do not matter.
// Nothing for a name that is unknown or stands for something Windows has no code page for. UTF-7 is left out
// on purpose: text in it hides markup from checks.
[[nodiscard]] std::optional<NamedEncoding> findEncoding(std::string_view name);

}  // namespace Corvane
