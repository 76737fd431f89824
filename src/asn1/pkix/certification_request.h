// PKCS #10 requests (RFC 2986 4). encodeRequest(decodeRequest(x)) == x for all that is accepted; so the part
// that is signed of a request that was read is encodeRequestInfo(request.info). Pure, any thread.
#pragma once

#include "asn1/pkix/attribute.h"
#include "asn1/pkix/public_key_info.h"

#include <vector>

namespace asn1 {

// Of version 1, which is written as 0.
struct CertificationRequestInfo {
    Bytes subject;  // the whole encoding of a Name, which goes in as it is
    SubjectPublicKeyInfo publicKey;
    // Written in this order, also where DER would have another one: signers and programs that compare
    // requests go by what was given.
    std::vector<Attribute> attributes;

    bool operator==(const CertificationRequestInfo&) const = default;
};

struct CertificationRequest {
    CertificationRequestInfo info;
    AlgorithmIdentifier signatureAlgorithm;
    Bytes signature;

    bool operator==(const CertificationRequest&) const = default;
};

// Throw Asn1Exception for a wrong identifier.
Bytes encodeRequestInfo(const CertificationRequestInfo& info);
Bytes encodeRequest(const CertificationRequest& request);
// The same of a part that was encoded, and signed, before.
Bytes encodeRequest(View info, const AlgorithmIdentifier& signatureAlgorithm, View signature);

// Throws Asn1Exception where it is no DER, is of another version, for bytes behind it. The subject is a Name.
CertificationRequest decodeRequest(View der);

}  // namespace asn1
