#include "asn1/decoders/ber_reader.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace asn1 {
namespace {

constexpr std::uint8_t moreOctets = 0x80;
// The tag numbers above 30 are in the octets that follow (X.690 8.1.2.4).
constexpr std::uint8_t longTag = 0x1F;
constexpr std::size_t maxTagSize = 4;

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

// How many bits of the last octet do not count. `value` is a BIT STRING's contents.
unsigned unusedBits(View value) {
    if (value.empty() || value.front() > 7 || (value.size() == 1 && value.front() != 0))
        throw Asn1Exception("a wrong number of unused bits (X.690 8.6.2)");
    return value.front();
}

}  // namespace

void BerReader::expectEnd() const {
    if (!atEnd())
        throw Asn1Exception("something is left over");
}

View BerReader::take(std::uint64_t count) {
    if (count > rest_.size())
        throw Asn1Exception("a value is longer than what holds it (X.690 8.1.3)");
    const auto size = static_cast<std::size_t>(count);
    const View taken = rest_.first(size);
    rest_ = rest_.subspan(size);
    return taken;
}

// The octets of the tag behind the first one.
void BerReader::readTag() {
    View number = rest_;
    for (std::size_t size = 1; (take(1).front() & moreOctets) != 0; ++size) {
        if (size == maxTagSize)
            throw Asn1Exception("a tag of more than four octets");
    }
    number = number.first(number.size() - rest_.size());
    if (number.front() == moreOctets || (number.size() == 1 && number.front() < longTag))
        throw Asn1Exception("a tag in more octets than it needs (X.690 8.1.2.2, 8.1.2.4.2)");
}

// False for an indefinite length.
bool BerReader::readLength(std::uint64_t& length) {
    const std::uint8_t first = take(1).front();
    length = first;
    if ((first & moreOctets) == 0)
        return true;
    if (first == moreOctets)
        return false;
    if (first == 0xFF)
        throw Asn1Exception("a length that begins with 0xFF (X.690 8.1.3.5)");
    View octets = take(first & 0x7F);
    const bool padded = octets.front() == 0;
    while (!octets.empty() && octets.front() == 0)
        octets = octets.subspan(1);
    if (octets.size() > sizeof(length))
        throw Asn1Exception("a length beyond 64 bits");
    length = 0;
    for (const std::uint8_t octet : octets)
        length = length << 8 | octet;
    if (rules_ == Rules::der && (padded || length < 0x80))
        throw Asn1Exception("DER: a length in more octets than it needs (X.690 10.1)");
    return true;
}

// What follows the first octet of an identifier, up to the contents. False for an indefinite length.
bool BerReader::readHeader(std::uint8_t identifier, std::uint64_t& length) {
    if ((identifier & longTag) == longTag)
        readTag();
    if (readLength(length))
        return true;
    if (rules_ == Rules::der)
        throw Asn1Exception("DER: indefinite length (X.690 10.1)");
    if ((identifier & tag::constructed) == 0)
        throw Asn1Exception("a primitive value of indefinite length (X.690 8.1.3.2)");
    return false;
}

// Finds the end-of-contents octets that belong to it. Values of definite length on the way are passed over.
View BerReader::readIndefinite() {
    const View begin = rest_;
    for (unsigned open = 1; open != 0;) {
        const std::uint8_t identifier = take(1).front();
        if (identifier == 0) {
            if (take(1).front() != 0)
                throw Asn1Exception("end-of-contents octets that are not 0 (X.690 8.1.5)");
            --open;
            continue;
        }
        if (std::uint64_t length = 0; readHeader(identifier, length))
            take(length);
        else if (depth_ + ++open > maxNesting)
            throw Asn1Exception("values are nested too deeply");
    }
    return begin.first(begin.size() - rest_.size() - 2);
}

View BerReader::readValue() {
    const std::uint8_t identifier = take(1).front();
    if (identifier == 0)
        throw Asn1Exception("end-of-contents where nothing is to end (X.690 8.1.5)");
    std::uint64_t length = 0;
    return readHeader(identifier, length) ? take(length) : readIndefinite();
}

void BerReader::expectNext(std::uint8_t identifier) const {
    if (!isNext(identifier))
        throw Asn1Exception("a value of another type was expected");
}

View BerReader::read(std::uint8_t identifier) {
    expectNext(identifier);
    return readValue();
}

BerReader BerReader::enter(std::uint8_t identifier) {
    if (depth_ == maxNesting)
        throw Asn1Exception("values are nested too deeply");
    const View contents = read(identifier);
    return {contents, rules_, depth_ + 1};
}

BerReader BerReader::enterBeginning(std::uint8_t identifier) {
    if (depth_ == maxNesting)
        throw Asn1Exception("values are nested too deeply");
    expectNext(identifier);
    take(1);
    std::uint64_t length = 0;
    const bool isDefinite = readHeader(identifier, length);
    const std::size_t size = rest_.size();
    return {take(isDefinite ? std::min<std::uint64_t>(length, size) : size), rules_, depth_ + 1};
}

View BerReader::readWhole() {
    const View begin = rest_;
    readValue();
    return begin.first(begin.size() - rest_.size());
}

void BerReader::skip() {
    readValue();
}

void BerReader::skipOptional(std::uint8_t identifier) {
    if (isNext(identifier))
        skip();
}

bool BerReader::readBoolean() {
    const View value = read(tag::boolean);
    if (value.size() != 1)
        throw Asn1Exception("a BOOLEAN that is not one octet (X.690 8.2.1)");
    if (rules_ == Rules::der && value.front() != 0 && value.front() != 0xFF)
        throw Asn1Exception("DER: a BOOLEAN that is neither 0 nor 255 (X.690 11.1)");
    return value.front() != 0;
}

// Segments may be made of segments themselves (X.690 8.7.3.2); their end is told to nobody.
template <class Take>
void BerReader::forEachSegment(std::uint8_t identifier, Take take) {
    while (!atEnd()) {
        if (isNext(identifier | tag::constructed))
            enter(identifier | tag::constructed).forEachSegment(identifier, take);
        else
            take(read(identifier));
    }
}

View BerReader::readOctetString(Bytes& joined) {
    if (rules_ == Rules::der || !isNext(tag::octetString | tag::constructed))
        return read(tag::octetString);
    joined.clear();
    enter(tag::octetString | tag::constructed).forEachSegment(tag::octetString, [&](View segment) {
        joined.insert(joined.end(), segment.begin(), segment.end());
    });
    return joined;
}

BitString BerReader::readBitString(Bytes& joined) {
    if (rules_ == Rules::der || !isNext(tag::bitString | tag::constructed)) {
        const View value = read(tag::bitString);
        const unsigned unused = unusedBits(value);
        if (rules_ == Rules::der && unused != 0 && (value.back() & ((1u << unused) - 1)) != 0)
            throw Asn1Exception("DER: unused bits that are not 0 (X.690 11.2.1)");
        return {value.subspan(1), unused};
    }
    joined.clear();
    unsigned unused = 0;
    enter(tag::bitString | tag::constructed).forEachSegment(tag::bitString, [&](View segment) {
        if (unused != 0)
            throw Asn1Exception("unused bits before the last segment (X.690 8.6.4)");
        unused = unusedBits(segment);
        joined.insert(joined.end(), segment.begin() + 1, segment.end());
    });
    return {joined, unused};
}

std::string BerReader::readOid() {
    const View value = read(tag::oid);
    if (value.size() > maxOidSize)
        throw Asn1Exception("an OBJECT IDENTIFIER of more than 128 octets");
    if (value.empty() || (value.back() & moreOctets) != 0)
        throw Asn1Exception("an OBJECT IDENTIFIER without an end (X.690 8.19.2)");
    std::string text;
    Decimal number;
    bool first = true;
    for (const std::uint8_t octet : value) {
        if (first && octet == moreOctets)
            throw Asn1Exception("an OBJECT IDENTIFIER with a leading zero (X.690 8.19.2)");
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
