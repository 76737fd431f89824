// Signed messages (RFC 5652, SignedData), as far as they are read without the system. Pure, any thread.
#pragma once

#include "asn1/decoders/ber_reader.h"

namespace asn1 {

// Whether a signed message, in BER, has its content inside, even if that is empty; a detached one has not.
// The beginning of the message is enough, and nothing behind that of the content is looked at. Throws
// Asn1Exception where it is no signed message.
bool hasContent(View message);

// What the signature of a signer (SignerInfo) is made over: its signed attributes as a SET (RFC 5652 5.4);
// empty where it has none, and it is made over the content. Attributes in BER that is not DER come as they
// are. Throws Asn1Exception.
Bytes signedAttributes(View signerInfo);

}  // namespace asn1
