// Values of BER read from arbitrary bytes. The readers of signed messages are asked the same of the whole and
// of its beginning, those of certificates read what they can, and what is accepted of strict DER is written
// again as it was.
#include "asn1/decoders/ber_reader.h"
#include "asn1/decoders/signed_data.h"
#include "asn1/decoders/x509_extensions.h"
#include "asn1/pkix/certificate_fields.h"
#include "asn1/pkix/certification_request.h"
#include "asn1/pkix/extensions.h"
#include "asn1/pkix/name.h"
#include "fuzz.h"

#include <algorithm>

namespace {

using namespace asn1;

// The values of the input, as deep as they go.
void walk(BerReader reader) {
    Bytes joined;
    while (!reader.atEnd()) {
        if (reader.isNext(tag::sequence)) {
            walk(reader.enter(tag::sequence));
        } else if (reader.isNext(tag::octetString) || reader.isNext(tag::octetString | 0x20)) {
            reader.readOctetString(joined);
        } else if (reader.isNext(tag::bitString | 0x20)) {
            const BitString bits = reader.readBitString(joined);
            require(bits.size() <= joined.size() * 8 && !bits.test(bits.size()));
        } else if (reader.isNext(tag::oid)) {
            require(reader.readOid().size() <= 4 * maxOidSize);  // "127." of each octet
        } else {
            reader.skip();
        }
    }
}

// Content that is seen at the beginning does not go when more comes.
void fuzzBeginnings(Input input) {
    const auto contentOf = [](Input message) {
        std::optional<bool> content;
        tolerate<Asn1Exception>([&] { content = hasContent(message); });
        return content;
    };
    for (const std::size_t size : {input.size() / 2, input.size() - input.size() / 8})
        require(!contentOf(input.first(size)).value_or(false) || contentOf(input).value_or(true));
}

template <class Decode, class Encode>
void comesBack(Input input, Decode decode, Encode encode) {
    tolerate<Asn1Exception>([&] { require(std::ranges::equal(encode(decode(input)), input)); });
}

}  // namespace

void fuzz(Input input) {
    fuzzBeginnings(input);
    tolerate<Asn1Exception>([&] {
        const Bytes set = signedAttributes(input);
        // The same bytes under the tag of a set, where there are any.
        require(set.empty() ||
                (set.front() == tag::set &&
                 std::search(input.begin(), input.end(), set.begin() + 1, set.end()) != input.end()));
    });
    for (const Rules rules : {Rules::ber, Rules::der})
        tolerate<Asn1Exception>([&] { walk(BerReader(input, rules)); });
    for (const auto read : {readKeyUsages, readExtendedKeyUsages, readPolicies})
        tolerate<Asn1Exception>([&] { read(input); });
    tolerate<Asn1Exception>([&] { readExtensions(input); });
    tolerate<Asn1Exception>([&] {
        const CertificateFields fields = readCertificateFields(input);
        require(fields.subject.data() > fields.issuer.data());
    });
    comesBack(input, decodeName, encodeName);
    comesBack(input, decodeExtensions, encodeExtensions);
    comesBack(input, decodeAttribute, encodeAttribute);
    comesBack(input, decodePublicKeyInfo, encodePublicKeyInfo);
    comesBack(input, decodeRequest,
              [](const CertificationRequest& request) { return encodeRequest(request); });
}
