// Fields of a certificate as they are encoded (RFC 5280 4.1): what is written beside it onto a token, and
// what is compared. Pure, any thread.
#pragma once

#include "asn1/base/values.h"

namespace asn1 {

// The whole encoding of each, header included; views of the certificate.
struct CertificateFields {
    View serialNumber;
    View issuer;
    View subject;
    View publicKeyInfo;
};

// Read as BER. Throws Asn1Exception where the fields up to the key are not those of a certificate.
CertificateFields readCertificateFields(View certificate);

}  // namespace asn1
