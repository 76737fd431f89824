#include "asn1/pkix/certificate_fields.h"

#include "asn1/decoders/ber_reader.h"

namespace asn1 {
namespace {

View readWhole(BerReader& reader, std::uint8_t identifier) {
    if (!reader.isNext(identifier))
        throw Asn1Exception("a value of another type was expected");
    return reader.readWhole();
}

}  // namespace

CertificateFields readCertificateFields(View certificate) {
    BerReader body = BerReader(certificate, Rules::ber).enter(tag::sequence).enter(tag::sequence);
    body.skipOptional(tag::context(0));  // version
    CertificateFields fields;
    fields.serialNumber = readWhole(body, tag::integer);
    body.read(tag::sequence);  // signature
    fields.issuer = readWhole(body, tag::sequence);
    body.read(tag::sequence);  // validity
    fields.subject = readWhole(body, tag::sequence);
    fields.publicKeyInfo = readWhole(body, tag::sequence);
    return fields;
}

}  // namespace asn1
