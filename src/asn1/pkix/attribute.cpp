#include "asn1/pkix/attribute.h"

#include "asn1/encoders/der_writer.h"
#include "asn1/pkix/set_of.h"

namespace asn1 {

Attribute decodeAttribute(View der) {
    BerReader whole(der);
    BerReader fields = whole.enter(tag::sequence);
    whole.expectEnd();
    Attribute attribute;
    attribute.oid = fields.readOid();
    attribute.values = readSetOf(fields);
    fields.expectEnd();
    if (attribute.values.empty())
        throw Asn1Exception("an attribute without a value (RFC 2986 4.1)");
    return attribute;
}

Bytes encodeAttribute(const Attribute& attribute) {
    DerWriter writer;
    writer.sequence([&](DerWriter& fields) { fields.oid(attribute.oid).setOf(attribute.values); });
    return writer.take();
}

}  // namespace asn1
