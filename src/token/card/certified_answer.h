// What tokens answer about their being certified. Pure, any thread; the answers come from cards and may be
// anything.
#pragma once

#include "binary/bytes.h"

#include <span>

namespace Corvane {

enum class Certified : std::uint8_t { yes = 0, no = 1, unknown = 2 };

// Rutoken: the byte at 5 of the answer to GET DATA 0189.
Certified readRutokenAnswer(std::span<const std::uint8_t> answer) noexcept;

// JaCarta: the seventh character of the text in the answer to GET DATA 0001, whose length stands at 11.
// Throws std::out_of_range where the text is shorter.
Certified readJaCartaAnswer(std::span<const std::uint8_t> answer);

}  // namespace Corvane
