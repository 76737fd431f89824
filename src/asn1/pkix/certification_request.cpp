#include "asn1/pkix/certification_request.h"

#include "asn1/pkix/name.h"

namespace asn1 {
namespace {

CertificationRequestInfo readInfo(BerReader fields) {
    const View version = fields.readInteger();
    if (version.size() != 1 || version.front() != 0)
        throw Asn1Exception("a request of an unknown version (RFC 2986 4.1)");
    CertificationRequestInfo info;
    const View subject = fields.readWhole();
    decodeName(subject);
    info.subject.assign(subject.begin(), subject.end());
    info.publicKey = decodePublicKeyInfo(fields.readWhole());
    for (BerReader list = fields.enter(tag::context(0)); !list.atEnd();)
        info.attributes.push_back(decodeAttribute(list.readWhole()));
    fields.expectEnd();
    return info;
}

}  // namespace

Bytes encodeRequestInfo(const CertificationRequestInfo& info) {
    DerWriter writer;
    writer.sequence([&](DerWriter& fields) {
        fields.integer(0).encoded(info.subject).encoded(encodePublicKeyInfo(info.publicKey));
        fields.nest(tag::context(0), [&](DerWriter& list) {
            for (const Attribute& attribute : info.attributes)
                list.encoded(encodeAttribute(attribute));
        });
    });
    return writer.take();
}

Bytes encodeRequest(View info, const AlgorithmIdentifier& signatureAlgorithm, View signature) {
    DerWriter writer;
    writer.sequence([&](DerWriter& fields) {
        fields.encoded(info);
        writeAlgorithm(fields, signatureAlgorithm);
        fields.bitString(signature);
    });
    return writer.take();
}

Bytes encodeRequest(const CertificationRequest& request) {
    return encodeRequest(encodeRequestInfo(request.info), request.signatureAlgorithm, request.signature);
}

CertificationRequest decodeRequest(View der) {
    BerReader whole(der);
    BerReader fields = whole.enter(tag::sequence);
    whole.expectEnd();
    CertificationRequest request;
    request.info = readInfo(fields.enter(tag::sequence));
    request.signatureAlgorithm = readAlgorithm(fields);
    request.signature = readBitOctets(fields);
    fields.expectEnd();
    return request;
}

}  // namespace asn1
