// Names, extensions, attributes, keys and requests: what is accepted of arbitrary bytes is written again as
// it was.
#include "asn1/pkix/certificate_fields.h"
#include "asn1/pkix/certification_request.h"
#include "asn1/pkix/extensions.h"
#include "asn1/pkix/name.h"
#include "fuzz.h"

#include <algorithm>

namespace {

template <class Decode, class Encode>
void comesBack(Input input, Decode decode, Encode encode) {
    try {
        require(std::ranges::equal(encode(decode(input)), input));
    } catch (const asn1::Asn1Exception&) {
        // Not of this type.
    }
}

}  // namespace

void fuzz(Input input) {
    comesBack(input, asn1::decodeName, asn1::encodeName);
    comesBack(input, asn1::decodeExtensions, asn1::encodeExtensions);
    comesBack(input, asn1::decodeAttribute, asn1::encodeAttribute);
    comesBack(input, asn1::decodePublicKeyInfo, asn1::encodePublicKeyInfo);
    comesBack(input, asn1::decodeRequest,
              [](const asn1::CertificationRequest& request) { return asn1::encodeRequest(request); });
    try {
        const asn1::CertificateFields fields = asn1::readCertificateFields(input);
        require(fields.subject.data() > fields.issuer.data());
    } catch (const asn1::Asn1Exception&) {
        // No certificate.
    }
}
