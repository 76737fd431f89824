// A certification request as scripts see it. Pure, any thread.
#pragma once

#include "asn1/pkix/certification_request.h"

#include <json/forwards.h>

namespace Corvane::Crypto {

// Throws Exception E_CERTIFICATION_REQUEST where the bytes are no request in DER.
asn1::CertificationRequest decodeCertificationRequest(asn1::View der);

// An object of "subject" (text of RFC 4514), "publicKeyAlgorithm", "publicKey" (SubjectPublicKeyInfo),
// "signatureAlgorithm", "keyUsages", "extendedKeyUsages", "policies" as certificates give them, "extensions"
// (an array of "oid", "critical" and "value") and "attributes" (an array of "oid" and "values"). Algorithms
// are dotted identifiers, everything else that is bytes is DER in Base64. What cannot be read of the
// extensions leaves its arrays empty.
Json::Value describeRequest(const asn1::CertificationRequest& request);

}  // namespace Corvane::Crypto
