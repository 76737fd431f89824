#include "token/card/certified_answer.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

namespace Corvane {

Certified readRutokenAnswer(std::span<const std::uint8_t> answer) noexcept {
    constexpr std::size_t flagAt = 5;
    if (answer.size() <= flagAt)
        return Certified::unknown;
    return answer[flagAt] != 0 ? Certified::yes : Certified::no;
}

Certified readJaCartaAnswer(std::span<const std::uint8_t> answer) {
    constexpr std::size_t lengthAt = 11;
    constexpr std::size_t textAt = lengthAt + 1;
    constexpr std::size_t flagAt = 6;
    if (answer.size() <= lengthAt || answer[lengthAt] + lengthAt > answer.size())
        return Certified::unknown;
    // A length that just reaches the end counts itself in.
    const auto rest = answer.subspan(textAt);
    const auto text = rest.first(std::min<std::size_t>(answer[lengthAt], rest.size()));
    if (text.size() <= flagAt)
        throw std::out_of_range("invalid string position");
    return text[flagAt] == '1' ? Certified::yes : Certified::no;
}

}  // namespace Corvane
