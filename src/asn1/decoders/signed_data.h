// Signed messages (RFC 5652, SignedData), as far as they are read without the system. Pure, any thread.
#pragma once

#include "asn1/decoders/ber_reader.h"

namespace asn1 {

// Whether a signed message, in BER, has its content inside, even if that is empty; a detached one has not.
// Bytes behind the message are not looked at. Throws Asn1Exception where it is no signed message.
bool hasContent(View message);

}  // namespace asn1
