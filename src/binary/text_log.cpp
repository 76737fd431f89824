#include "binary/text.h"

#include "core/log.h"

#include <stdexcept>

namespace Corvane::Binary {

std::string toString(std::span<const std::uint8_t> bytes, std::size_t offset) {
    try {
        return detail::toString(bytes, offset);
    } catch (const std::out_of_range& error) {
        writeLog(LogLevel::error, L"Corvane::Binary::toString", error.what());
        throw;
    }
}

}  // namespace Corvane::Binary
