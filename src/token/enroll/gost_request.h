// The request for a certificate (PKCS #10, RFC 2986) of a GOST R 34.10-2001 key (RFC 4491), for keys that
// only their token can sign with. Pure, any thread.
#pragma once

#include "asn1/base/values.h"

#include <string_view>

namespace Corvane::detail {

inline constexpr std::string_view gostSignatureParameters = "1.2.643.2.2.35.1";  // set A
inline constexpr std::string_view gostHashParameters = "1.2.643.2.2.30.1";

// What a page gives, in DER.
struct RequestParts {
    asn1::View distinguishedName;
    asn1::View extensions;
    // One attribute of its own; absent where there is none.
    const Bytes* enrollmentParameters = nullptr;
};

// Throws Asn1Exception where one of them is not the type that is asked for: a Name, a sequence, an attribute.
void checkRequestParts(const RequestParts& parts);

// The part that is signed. The parts go in as they are; `publicKey` is that of the token: X, then Y, each
// little-endian. Throws Asn1Exception as above.
Bytes encodeGostRequestInfo(const RequestParts& parts, asn1::View publicKey);

// The request, of the part that was signed and the token's signature.
Bytes encodeGostRequest(asn1::View info, asn1::View signature);

}  // namespace Corvane::detail
