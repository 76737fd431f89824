// The parts of a request as pages give them, one behind the other, the answers of
// cards, and the files of drivers.
#include "asn1/decoders/ber_reader.h"
#include "asn1/pkix/certification_request.h"
#include "fuzz.h"
#include "token/card/certified_answer.h"
#include "token/cryptoki/image.h"
#include "token/enroll/gost_request.h"

#include <algorithm>
#include <array>

namespace {

using Corvane::Bytes;
using Corvane::detail::RequestParts;

// What is accepted stands in the request as it was given.
void encode(const RequestParts& parts) {
    constexpr std::array<std::uint8_t, 64> key{};
    const Bytes der =
        Corvane::detail::encodeGostRequest(Corvane::detail::encodeGostRequestInfo(parts, key), key);
    const asn1::CertificationRequest request = asn1::decodeRequest(der);
    require(std::ranges::equal(request.info.subject, parts.distinguishedName));
    require(std::ranges::equal(request.info.attributes.at(0).values.at(0), parts.extensions));
    require(asn1::encodeAttribute(request.info.attributes.at(1)) == *parts.enrollmentParameters);
}

}  // namespace

void fuzz(Input input) {
    cryptoki::readImage(input);
    Corvane::readRutokenAnswer(input);
    // A text may be too short.
    tolerate<std::out_of_range>([&] { Corvane::readJaCartaAnswer(input); });
    tolerate<asn1::Asn1Exception>([&] {
        asn1::BerReader values(input);
        RequestParts parts;
        parts.distinguishedName = values.readWhole();
        parts.extensions = values.readWhole();
        const asn1::View last = values.readWhole();
        const Bytes attribute(last.begin(), last.end());
        parts.enrollmentParameters = &attribute;
        encode(parts);
    });
}
