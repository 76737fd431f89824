// The attribute of PKCS #9 and PKCS #10 (RFC 2986 4.1): a type and a set of values.
// encodeAttribute(decodeAttribute(x)) == x for all that is accepted. Pure, any thread.
#pragma once

#include "asn1/base/values.h"

#include <string>
#include <string_view>
#include <vector>

namespace asn1 {

struct Attribute {
    std::string oid;
    std::vector<Bytes> values;  // the whole encoding of each; written in the order of X.690 11.6

    bool operator==(const Attribute&) const = default;
};

// Asks for extensions in a request: one value of the type Extensions (RFC 2985 5.4.2).
inline constexpr std::string_view extensionRequestOid = "1.2.840.113549.1.9.14";

// Throws Asn1Exception where it is no DER, has no value, or bytes follow.
Attribute decodeAttribute(View der);
// Throws Asn1Exception for a wrong identifier.
Bytes encodeAttribute(const Attribute& attribute);

}  // namespace asn1
