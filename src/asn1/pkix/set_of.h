// SET OF as DER has it. Pure, any thread.
#pragma once

#include "asn1/decoders/ber_reader.h"

#include <vector>

namespace asn1 {

// The encodings of the values of the next SET OF. Throws Asn1Exception where they do not stand in the order
// of X.690 11.6, which is what DerWriter::setOf() writes them in.
std::vector<Bytes> readSetOf(BerReader& reader);

}  // namespace asn1
