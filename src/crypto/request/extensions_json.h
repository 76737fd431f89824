// The extensions that a request asks for, from JSON:
//
//     {"keyUsage": ["digitalSignature", "nonRepudiation"],
//      "extendedKeyUsage": ["clientAuth", "1.2.643.2.2.34.6"],
//      "policies": ["1.2.643.100.113.1"],
//      "subjectAltName": [{"email": "i@example.org"}],
//      "other": [{"oid": "1.2.643.100.111", "critical": false, "value": "DAPQ"}]}
//
// Every member may be left out, but not all of them. A member other than "other" may also be an object of
// "critical" and "values". Of the four keyUsage is critical where nothing is said, as RFC 5280 recommends.
// The names of usages are those that Certificate.ExtensionsAsJson gives. The value of another extension is
// DER in Base64. Pure, any thread.
#pragma once

#include "binary/bytes.h"

#include <string_view>

namespace Corvane::Crypto {

// The type Extensions in DER, in the order of the members above. Throws JsonException E_REQUEST_EXTENSIONS,
// whose details name the member, for what is not as above, for an unknown member too; NameTextException
// E_DISTINGUISHED_NAME for a name in subjectAltName.
Bytes encodeExtensionsJson(std::wstring_view json);

}  // namespace Corvane::Crypto
