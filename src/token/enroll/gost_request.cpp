#include "token/enroll/gost_request.h"

#include "asn1/decoders/ber_reader.h"
#include "asn1/encoders/der_writer.h"
#include "asn1/pkix/certification_request.h"
#include "asn1/pkix/name.h"

namespace Corvane::detail {
namespace {

constexpr char gostKey[] = "1.2.643.2.2.19";
constexpr char gostSignature[] = "1.2.643.2.2.3";

void checkSequence(asn1::View der) {
    asn1::BerReader reader(der);
    reader.read(asn1::tag::sequence);
    reader.expectEnd();
}

asn1::SubjectPublicKeyInfo publicKeyInfo(asn1::View publicKey) {
    asn1::DerWriter parameters;
    parameters.sequence(
        [](asn1::DerWriter& fields) { fields.oid(gostSignatureParameters).oid(gostHashParameters); });
    asn1::DerWriter key;
    key.octetString(publicKey);
    return {{gostKey, parameters.take()}, key.take()};
}

}  // namespace

void checkRequestParts(const RequestParts& parts) {
    asn1::decodeName(parts.distinguishedName);
    checkSequence(parts.extensions);
    if (parts.enrollmentParameters)
        asn1::decodeAttribute(*parts.enrollmentParameters);
}

Bytes encodeGostRequestInfo(const RequestParts& parts, asn1::View publicKey) {
    checkRequestParts(parts);
    const auto bytes = [](asn1::View view) { return Bytes(view.begin(), view.end()); };
    asn1::CertificationRequestInfo info;
    info.subject = bytes(parts.distinguishedName);
    info.publicKey = publicKeyInfo(publicKey);
    info.attributes.push_back({std::string(asn1::extensionRequestOid), {bytes(parts.extensions)}});
    if (parts.enrollmentParameters)
        info.attributes.push_back(asn1::decodeAttribute(*parts.enrollmentParameters));
    return asn1::encodeRequestInfo(info);
}

Bytes encodeGostRequest(asn1::View info, asn1::View signature) {
    return asn1::encodeRequest(info, {gostSignature, {}}, signature);
}

}  // namespace Corvane::detail
