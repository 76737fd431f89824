#include "asn1/pkix/name.h"

#include "asn1/decoders/ber_reader.h"
#include "asn1/encoders/der_writer.h"
#include "asn1/pkix/set_of.h"

#include <utility>

namespace asn1 {
namespace {

NameAttribute decodeNameAttribute(View der) {
    BerReader fields = BerReader(der).enter(tag::sequence);
    NameAttribute attribute;
    attribute.oid = fields.readOid();
    const View value = fields.readWhole();
    attribute.value.assign(value.begin(), value.end());
    fields.expectEnd();
    return attribute;
}

Bytes encodeNameAttribute(const NameAttribute& attribute) {
    DerWriter writer;
    writer.sequence([&](DerWriter& fields) { fields.oid(attribute.oid).encoded(attribute.value); });
    return writer.take();
}

}  // namespace

Name decodeName(View der) {
    BerReader whole(der);
    Name name;
    for (BerReader list = whole.enter(tag::sequence); !list.atEnd();) {
        RelativeName& relative = name.emplace_back();
        for (const Bytes& attribute : readSetOf(list))
            relative.push_back(decodeNameAttribute(attribute));
        if (relative.empty())
            throw Asn1Exception("a relative name without an attribute (RFC 5280 4.1.2.4)");
    }
    whole.expectEnd();
    return name;
}

Bytes encodeName(const Name& name) {
    DerWriter writer;
    writer.sequence([&](DerWriter& list) {
        for (const RelativeName& relative : name) {
            std::vector<Bytes> attributes;
            for (const NameAttribute& attribute : relative)
                attributes.push_back(encodeNameAttribute(attribute));
            list.setOf(std::move(attributes));
        }
    });
    return writer.take();
}

}  // namespace asn1
