#include "binary/text.h"

#include "core/log.h"

#include <stdexcept>

namespace Corvane::Binary {

std::string toString(std::span<const std::uint8_t> bytes, std::size_t offset) {
    constexpr const wchar_t* function = L"Corvane::Binary::toString";
    writeLog(LogLevel::debug, function, L"[in] size: ", bytes.size(), L" [in] offset: ", offset);
    if (bytes.empty())
        return {};
    if (offset >= bytes.size()) {
        constexpr const char* fault = "invalid offset";
        writeLog(LogLevel::error, function, fault);
        throw std::out_of_range(fault);
    }
    return {bytes.begin() + static_cast<std::ptrdiff_t>(offset), bytes.end()};
}

}  // namespace Corvane::Binary
