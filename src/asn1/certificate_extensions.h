// The extensions of an X.509 certificate (RFC 5280) and the values of some of them. Pure, any thread.
#pragma once

#include "asn1/der_reader.h"

#include <string>
#include <string_view>
#include <vector>

namespace asn1 {

struct Extension {
    std::string oid;
    bool critical = false;
    View value;  // of extnValue's OCTET STRING, within the certificate's bytes
};

// In the order in which they stand; none where the certificate has none. Throws Asn1Exception.
std::vector<Extension> readExtensions(View certificate);

// The value of an extension, or null where it is not among them.
const Extension* findExtension(const std::vector<Extension>& extensions, std::string_view oid) noexcept;

inline constexpr std::string_view keyUsageOid = "2.5.29.15";
inline constexpr std::string_view certificatePoliciesOid = "2.5.29.32";
inline constexpr std::string_view extendedKeyUsageOid = "2.5.29.37";

// The names of the bits that are set, in the alphabet's order. Throws Asn1Exception.
std::vector<std::string> readKeyUsages(View value);
// The purposes, and the policies without their qualifiers, in their order. Throw Asn1Exception.
std::vector<std::string> readExtendedKeyUsages(View value);
std::vector<std::string> readPolicies(View value);

}  // namespace asn1
