#include "asn1/encoders/object_identifier.h"

#include <algorithm>

namespace asn1 {
namespace {

// An octet of a number holds seven bits and may stand for a little more than two digits.
constexpr std::size_t maxTextSize = maxOidSize * 4;

[[noreturn]] void refuse(const char* why) {
    throw Asn1Exception(why);
}

// A number of any size: digits to the base of 128, least significant first.
Bytes toBase128(std::string_view decimal, unsigned added) {
    Bytes digits{0};
    const auto multiplyAndAdd = [&](unsigned factor, unsigned carry) {
        for (std::uint8_t& digit : digits) {
            carry += digit * factor;
            digit = static_cast<std::uint8_t>(carry & 0x7F);
            carry >>= 7;
        }
        for (; carry != 0; carry >>= 7)
            digits.push_back(static_cast<std::uint8_t>(carry & 0x7F));
    };
    for (const char digit : decimal)
        multiplyAndAdd(10, static_cast<unsigned>(digit - '0'));
    multiplyAndAdd(1, added);
    return digits;
}

// The number up to the next point, which is taken off `text` with it.
std::string_view takeNumber(std::string_view& text) {
    const std::string_view number = text.substr(0, text.find('.'));
    if (number.empty() || (number.size() > 1 && number.front() == '0') ||
        !std::ranges::all_of(number, [](char digit) { return digit >= '0' && digit <= '9'; }))
        refuse("an identifier is numbers with points between them");
    text.remove_prefix(std::min(text.size(), number.size() + 1));
    return number;
}

// 40 for each unit of the first number is added to the second one (X.690 8.19.4).
unsigned firstArc(std::string_view number) {
    if (number.size() != 1 || number.front() > '2')
        refuse("an identifier begins with 0, 1 or 2 (X.660)");
    return static_cast<unsigned>(number.front() - '0');
}

void append(Bytes& contents, std::string_view number, unsigned added) {
    const Bytes digits = toBase128(number, added);
    for (std::size_t i = digits.size(); i-- > 0;)
        contents.push_back(static_cast<std::uint8_t>(digits[i] | (i == 0 ? 0 : 0x80)));
    if (contents.size() > maxOidSize)
        refuse("an OBJECT IDENTIFIER of more than 128 octets");
}

}  // namespace

Bytes oidContents(std::string_view dotted) {
    if (dotted.size() > maxTextSize || dotted.ends_with('.'))
        refuse("an identifier is numbers with points between them");
    const unsigned arc = firstArc(takeNumber(dotted));
    const std::string_view second = takeNumber(dotted);
    if (arc < 2 && (second.size() > 2 || (second.size() == 2 && second.front() > '3')))
        refuse("below 0 and 1 the second number of an identifier is 39 at most (X.660)");
    Bytes contents;
    append(contents, second, arc * 40);
    while (!dotted.empty())
        append(contents, takeNumber(dotted), 0);
    return contents;
}

bool isOid(std::string_view dotted) {
    try {
        return !oidContents(dotted).empty();
    } catch (const Asn1Exception&) {
        return false;
    }
}

}  // namespace asn1
