// The type Extensions (RFC 5280 4.1) by itself, strictly as DER: what a request asks for. The extensions of
// certificates that others made are read by asn1/decoders/x509_extensions.h. encodeExtensions() of what
// decodeExtensions() accepts gives the same bytes. Pure, any thread.
#pragma once

#include "asn1/decoders/x509_extensions.h"

#include <vector>

namespace asn1 {

// Throws Asn1Exception where it is no DER, has no extension in it, or bytes follow.
std::vector<Extension> decodeExtensions(View der);
// Throws Asn1Exception for a wrong identifier.
Bytes encodeExtensions(const std::vector<Extension>& extensions);

}  // namespace asn1
