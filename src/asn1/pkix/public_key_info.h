// Algorithms and public keys (RFC 5280 4.1.1.2, 4.1.2.7). encode(decode(x)) == x for all that is accepted.
// Pure, any thread.
#pragma once

#include "asn1/decoders/ber_reader.h"
#include "asn1/encoders/der_writer.h"

#include <string>

namespace asn1 {

struct AlgorithmIdentifier {
    std::string oid;
    Bytes parameters;  // the whole encoding; empty where they are absent

    bool operator==(const AlgorithmIdentifier&) const = default;
};

struct SubjectPublicKeyInfo {
    AlgorithmIdentifier algorithm;
    Bytes key;  // the octets of the BIT STRING

    bool operator==(const SubjectPublicKeyInfo&) const = default;
};

// The next value of a reader, and the next one of a writer. Throw Asn1Exception.
AlgorithmIdentifier readAlgorithm(BerReader& reader);
void writeAlgorithm(DerWriter& writer, const AlgorithmIdentifier& algorithm);

// A BIT STRING that holds whole octets: keys and signatures. Throws Asn1Exception for other ones.
Bytes readBitOctets(BerReader& reader);

// Throw Asn1Exception where it is no DER, for bytes behind it, and for a wrong identifier.
SubjectPublicKeyInfo decodePublicKeyInfo(View der);
Bytes encodePublicKeyInfo(const SubjectPublicKeyInfo& info);

}  // namespace asn1
