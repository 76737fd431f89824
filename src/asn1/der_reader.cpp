#include "asn1/der_reader.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace asn1 {
namespace {

constexpr std::uint8_t moreOctets = 0x80;

// A number of any size: decimal digits, least significant first.
class Decimal {
public:
    // Takes in the next seven bits.
    void append(unsigned bits) {
        unsigned carry = bits;
        for (std::uint8_t& digit : digits_) {
            carry += digit * 128u;
            digit = static_cast<std::uint8_t>(carry % 10);
            carry /= 10;
        }
        for (; carry != 0; carry /= 10)
            digits_.push_back(static_cast<std::uint8_t>(carry % 10));
    }

    bool isBelow(unsigned bound) const noexcept { return digits_.size() <= 2 && value() < bound; }
    // For numbers of two digits at most.
    unsigned value() const noexcept {
        return std::accumulate(digits_.rbegin(), digits_.rend(), 0u,
                               [](unsigned number, std::uint8_t digit) { return number * 10 + digit; });
    }

    // 40 or 80 of the first number of an identifier stand for its first arc. `number` may not be above ours.
    void subtract(unsigned number) {
        int borrow = static_cast<int>(number);
        for (std::uint8_t& digit : digits_) {
            int left = digit - borrow % 10;
            borrow /= 10;
            if (left < 0) {
                left += 10;
                ++borrow;
            }
            digit = static_cast<std::uint8_t>(left);
        }
        while (!digits_.empty() && digits_.back() == 0)
            digits_.pop_back();
    }

    std::string text() const {
        if (digits_.empty())
            return "0";
        std::string text(digits_.size(), '0');
        std::transform(digits_.rbegin(), digits_.rend(), text.begin(),
                       [](std::uint8_t digit) { return static_cast<char>('0' + digit); });
        return text;
    }

private:
    std::vector<std::uint8_t> digits_;
};

// The first number holds two arcs (X.690 8.19.4).
std::string firstArcs(Decimal number) {
    const unsigned arc = number.isBelow(40) ? 0 : number.isBelow(80) ? 1 : 2;
    number.subtract(arc * 40);
    std::string text = std::to_string(arc);
    return text.append(1, '.').append(number.text());
}

}  // namespace

void DerReader::expectEnd() const {
    if (!atEnd())
        throw Asn1Exception("DER: something is left over");
}

View DerReader::take(std::size_t count) {
    if (count > rest_.size())
        throw Asn1Exception("DER: a value is longer than what holds it (X.690 8.1.3)");
    const View taken = rest_.first(count);
    rest_ = rest_.subspan(count);
    return taken;
}

std::size_t DerReader::readLength() {
    const std::uint8_t first = take(1).front();
    if ((first & moreOctets) == 0)
        return first;
    if (first == moreOctets)
        throw Asn1Exception("DER: indefinite length (X.690 10.1)");
    std::size_t length = 0;
    const View octets = take(first & 0x7F);
    // No value is that long; X.690 8.1.3.5 keeps the octet 0xFF for later.
    if (octets.size() > sizeof(std::uint32_t))
        throw Asn1Exception("DER: a length in more than four octets");
    for (const std::uint8_t octet : octets)
        length = length << 8 | octet;
    if (octets.front() == 0 || length < 0x80)
        throw Asn1Exception("DER: a length in more octets than it needs (X.690 10.1)");
    return length;
}

View DerReader::read(std::uint8_t identifier) {
    if (!isNext(identifier))
        throw Asn1Exception("DER: a value of another type was expected");
    take(1);
    return take(readLength());
}

void DerReader::skip() {
    if ((take(1).front() & 0x1F) == 0x1F)
        throw Asn1Exception("DER: tags above 30 are not supported");
    take(readLength());
}

void DerReader::skipOptional(std::uint8_t identifier) {
    if (isNext(identifier))
        skip();
}

bool DerReader::readBoolean() {
    const View value = read(tag::boolean);
    if (value.size() != 1 || (value.front() != 0 && value.front() != 0xFF))
        throw Asn1Exception("DER: a BOOLEAN that is neither 0 nor 255 (X.690 11.1)");
    return value.front() != 0;
}

BitString DerReader::readBitString() {
    const View value = read(tag::bitString);
    if (value.empty() || value.front() > 7 || (value.size() == 1 && value.front() != 0))
        throw Asn1Exception("DER: a wrong number of unused bits (X.690 8.6.2)");
    const unsigned unused = value.front();
    const View bytes = value.subspan(1);
    if (unused != 0 && (bytes.back() & ((1u << unused) - 1)) != 0)
        throw Asn1Exception("DER: unused bits that are not 0 (X.690 11.2.1)");
    return {bytes, unused};
}

std::string DerReader::readOid() {
    const View value = read(tag::oid);
    if (value.empty() || (value.back() & moreOctets) != 0)
        throw Asn1Exception("DER: an OBJECT IDENTIFIER without an end (X.690 8.19.2)");
    std::string text;
    Decimal number;
    bool first = true;
    for (const std::uint8_t octet : value) {
        if (first && octet == moreOctets)
            throw Asn1Exception("DER: an OBJECT IDENTIFIER with a leading zero (X.690 8.19.2)");
        number.append(octet & 0x7Fu);
        first = (octet & moreOctets) == 0;
        if (!first)
            continue;
        if (!text.empty())
            text.append(1, '.').append(number.text());
        else
            text = firstArcs(number);
        number = Decimal();
    }
    return text;
}

}  // namespace asn1
