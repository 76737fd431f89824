#include "asn1/pkix/public_key_info.h"

namespace asn1 {

AlgorithmIdentifier readAlgorithm(BerReader& reader) {
    BerReader fields = reader.enter(tag::sequence);
    AlgorithmIdentifier algorithm;
    algorithm.oid = fields.readOid();
    if (!fields.atEnd()) {
        const View parameters = fields.readWhole();
        algorithm.parameters.assign(parameters.begin(), parameters.end());
    }
    fields.expectEnd();
    return algorithm;
}

void writeAlgorithm(DerWriter& writer, const AlgorithmIdentifier& algorithm) {
    writer.sequence([&](DerWriter& fields) { fields.oid(algorithm.oid).encoded(algorithm.parameters); });
}

Bytes readBitOctets(BerReader& reader) {
    const View contents = reader.read(tag::bitString);
    if (contents.empty() || contents.front() != 0)
        throw Asn1Exception("a BIT STRING of whole octets was expected");
    return {contents.begin() + 1, contents.end()};
}

SubjectPublicKeyInfo decodePublicKeyInfo(View der) {
    BerReader whole(der);
    BerReader fields = whole.enter(tag::sequence);
    whole.expectEnd();
    SubjectPublicKeyInfo info;
    info.algorithm = readAlgorithm(fields);
    info.key = readBitOctets(fields);
    fields.expectEnd();
    return info;
}

Bytes encodePublicKeyInfo(const SubjectPublicKeyInfo& info) {
    DerWriter writer;
    writer.sequence([&](DerWriter& fields) {
        writeAlgorithm(fields, info.algorithm);
        fields.bitString(info.key);
    });
    return writer.take();
}

}  // namespace asn1
