// The extensions of an X.509 certificate (RFC 5280) and the values of some of them. Read as BER, and what
// stands behind a value is not looked at: a certificate that others accept is not refused here. Pure, any
// thread.
#pragma once

#include "asn1/decoders/ber_reader.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace asn1 {

struct Extension {
    std::string oid;
    bool critical = false;
    Bytes value;  // of extnValue's OCTET STRING
};

// In the order in which they stand; none where the certificate has none. One that cannot be read is passed
// over. Throws Asn1Exception where the certificate around them cannot be read.
std::vector<Extension> readExtensions(View certificate);

// The value of an extension, or null where it is not among them.
const Extension* findExtension(const std::vector<Extension>& extensions, std::string_view oid) noexcept;

inline constexpr std::string_view keyUsageOid = "2.5.29.15";
inline constexpr std::string_view subjectAltNameOid = "2.5.29.17";
inline constexpr std::string_view certificatePoliciesOid = "2.5.29.32";
inline constexpr std::string_view extendedKeyUsageOid = "2.5.29.37";

// The names of the bits that are set, in the alphabet's order. Throws Asn1Exception.
std::vector<std::string> readKeyUsages(View value);
// The number of the bit with this name, as readKeyUsages() gives it (RFC 5280 4.2.1.3).
std::optional<unsigned> keyUsageBit(std::string_view name) noexcept;
// The purposes, and the policies without their qualifiers, in their order. Throw Asn1Exception.
std::vector<std::string> readExtendedKeyUsages(View value);
std::vector<std::string> readPolicies(View value);

}  // namespace asn1
