// Values of BER read from arbitrary bytes; what was read is written as DER and must be read from that alike.
// The readers of signed messages are asked the same of the whole and of its beginning, and those of
// extensions of certificates read them and their values.
#include "asn1/decoders/ber_reader.h"

#include "asn1/decoders/signed_data.h"
#include "asn1/decoders/x509_extensions.h"
#include "fuzz.h"

#include <algorithm>
#include <optional>

namespace {

using asn1::BerReader;
using asn1::Bytes;
using asn1::Rules;
using asn1::View;

void append(Bytes& encoded, std::uint8_t identifier, View contents) {
    encoded.push_back(identifier);
    if (contents.size() >= 0x80) {
        std::uint8_t octets = 0;
        for (std::size_t left = contents.size(); left != 0; left >>= 8)
            ++octets;
        encoded.push_back(static_cast<std::uint8_t>(0x80 | octets));
        while (octets-- > 0)
            encoded.push_back(static_cast<std::uint8_t>(contents.size() >> 8 * octets));
    } else {
        encoded.push_back(static_cast<std::uint8_t>(contents.size()));
    }
    encoded.insert(encoded.end(), contents.begin(), contents.end());
}

// The sequences, strings and identifiers of the input as DER.
Bytes toDer(BerReader reader) {
    Bytes encoded;
    Bytes joined;
    while (!reader.atEnd()) {
        if (reader.isNext(asn1::tag::sequence)) {
            append(encoded, asn1::tag::sequence, toDer(reader.enter(asn1::tag::sequence)));
        } else if (reader.isNext(asn1::tag::octetString) || reader.isNext(asn1::tag::octetString | 0x20)) {
            append(encoded, asn1::tag::octetString, reader.readOctetString(joined));
        } else if (reader.isNext(asn1::tag::bitString | 0x20)) {
            const asn1::BitString bits = reader.readBitString(joined);
            require(bits.size() <= joined.size() * 8 && !bits.test(bits.size()));
        } else if (reader.isNext(asn1::tag::oid)) {
            BerReader value = reader;
            require(reader.readOid().size() <= 4 * asn1::maxOidSize);  // "127." of each octet
            append(encoded, asn1::tag::oid, value.read(asn1::tag::oid));
        } else {
            reader.skip();
        }
    }
    return encoded;
}

template <class Action>
void tolerate(Action&& action) {
    try {
        action();
    } catch (const asn1::Asn1Exception&) {
        // Not what was asked for.
    }
}

// Whether it is a signed message with content; nothing when it is none.
std::optional<bool> contentOf(Input message) {
    try {
        return asn1::hasContent(message);
    } catch (const asn1::Asn1Exception&) {
        return std::nullopt;
    }
}

}  // namespace

void fuzz(Input input) {
    // Content that is seen at the beginning does not go when more comes.
    const auto whole = contentOf(input);
    for (const std::size_t size : {input.size() / 2, input.size() - input.size() / 8}) {
        const auto beginning = contentOf(input.first(size));
        require(!beginning || !*beginning || !whole || *whole);
    }
    tolerate([&] {
        const Bytes set = asn1::signedAttributes(input);
        require(set.size() <= input.size());
        // The same bytes under the tag of a set, where there are any.
        require(set.empty() ||
                (set.front() == asn1::tag::set &&
                 std::search(input.begin(), input.end(), set.begin() + 1, set.end()) != input.end()));
    });
    tolerate([&] {
        const Bytes der = toDer(BerReader(input, Rules::ber));
        require(der.size() <= input.size());
        require(toDer(BerReader(der)) == der);
    });
    // Good BER is not always good DER.
    tolerate([&] { require(toDer(BerReader(input)).size() <= input.size()); });
    for (const auto read : {asn1::readKeyUsages, asn1::readExtendedKeyUsages, asn1::readPolicies})
        tolerate([&] { read(input); });
    tolerate([&] {
        for (const asn1::Extension& extension : asn1::readExtensions(input))
            asn1::readKeyUsages(extension.value);
    });
}
