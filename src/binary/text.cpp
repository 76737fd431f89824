#include "binary/text.h"

#include <stdexcept>

namespace Corvane::Binary::detail {

std::string toString(std::span<const std::uint8_t> bytes, std::size_t offset) {
    if (bytes.empty()) {
        return {};
    }
    if (offset >= bytes.size()) {
        throw std::out_of_range("invalid offset");
    }
    return {bytes.begin() + static_cast<std::ptrdiff_t>(offset), bytes.end()};
}

}  // namespace Corvane::Binary::detail
