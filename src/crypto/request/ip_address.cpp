#include "crypto/request/ip_address.h"

#include <charconv>
#include <optional>

namespace Corvane::Crypto {
namespace {

constexpr std::size_t v6Size = 16;

// A number of so many digits at most, and nothing else.
std::optional<unsigned> number(std::string_view text, int base, std::size_t digits) {
    unsigned value = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value, base);
    if (text.empty() || text.size() > digits || read.ec != std::errc() || read.ptr != end)
        return std::nullopt;
    return value;
}

Bytes parseV4(std::string_view text) {
    Bytes octets;
    for (;;) {
        const std::string_view part = text.substr(0, text.find('.'));
        const std::optional<unsigned> value = number(part, 10, 3);
        if (!value || *value > 255 || (part.size() > 1 && part.front() == '0'))
            return {};
        octets.push_back(static_cast<std::uint8_t>(*value));
        if (part.size() == text.size())
            return octets.size() == 4 ? octets : Bytes();
        text.remove_prefix(part.size() + 1);
    }
}

// The groups of one side of "::"; nothing where they are not in order. Only the end of an address may be of
// the older form.
std::optional<Bytes> parseGroups(std::string_view text, bool atEnd) {
    Bytes octets;
    while (!text.empty()) {
        const std::string_view part = text.substr(0, text.find(':'));
        const bool last = part.size() == text.size();
        if (const std::optional<unsigned> value = number(part, 16, 4)) {
            octets.push_back(static_cast<std::uint8_t>(*value >> 8));
            octets.push_back(static_cast<std::uint8_t>(*value & 0xFF));
        } else if (const Bytes v4 = last && atEnd ? parseV4(part) : Bytes(); !v4.empty()) {
            octets.insert(octets.end(), v4.begin(), v4.end());
        } else {
            return std::nullopt;
        }
        if (!last && part.size() + 1 == text.size())
            return std::nullopt;  // a colon at the end
        text.remove_prefix(last ? part.size() : part.size() + 1);
    }
    return octets;
}

Bytes parseV6(std::string_view text) {
    const std::size_t gap = text.find("::");
    std::optional<Bytes> before = parseGroups(text.substr(0, gap), gap == std::string_view::npos);
    if (!before)
        return {};
    if (gap == std::string_view::npos)
        return before->size() == v6Size ? *before : Bytes();
    const std::optional<Bytes> after = parseGroups(text.substr(gap + 2), true);
    if (!after || before->size() + after->size() >= v6Size)
        return {};
    before->resize(v6Size - after->size());
    before->insert(before->end(), after->begin(), after->end());
    return *before;
}

}  // namespace

Bytes parseIpAddress(std::string_view text) {
    return text.find(':') == std::string_view::npos ? parseV4(text) : parseV6(text);
}

}  // namespace Corvane::Crypto
