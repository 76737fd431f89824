// Distinguished names (X.501; RFC 5280 4.1.2.4). encodeName(decodeName(x)) == x for all that is accepted.
// Pure, any thread.
#pragma once

#include "asn1/base/values.h"

#include <string>
#include <vector>

namespace asn1 {

struct NameAttribute {
    std::string oid;
    Bytes value;  // the whole encoding, whatever type it has

    bool operator==(const NameAttribute&) const = default;
};

// What stands beside each other in a name, mostly one attribute. Their order means nothing.
using RelativeName = std::vector<NameAttribute>;
// In the order of the encoding: the country comes before the person.
using Name = std::vector<RelativeName>;

// Throws Asn1Exception where it is no DER, and for bytes behind it.
Name decodeName(View der);
// Throws Asn1Exception for a wrong identifier.
Bytes encodeName(const Name& name);

}  // namespace asn1
