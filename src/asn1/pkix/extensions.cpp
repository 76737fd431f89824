#include "asn1/pkix/extensions.h"

#include "asn1/encoders/der_writer.h"

namespace asn1 {
namespace {

Extension readExtension(BerReader fields) {
    Extension extension;
    extension.oid = fields.readOid();
    if (fields.isNext(tag::boolean)) {
        extension.critical = fields.readBoolean();
        if (!extension.critical)
            throw Asn1Exception("DER: a default value that is written (X.690 11.5)");
    }
    const View value = fields.read(tag::octetString);
    extension.value.assign(value.begin(), value.end());
    fields.expectEnd();
    return extension;
}

}  // namespace

std::vector<Extension> decodeExtensions(View der) {
    BerReader whole(der);
    BerReader list = whole.enter(tag::sequence);
    whole.expectEnd();
    std::vector<Extension> extensions;
    do
        extensions.push_back(readExtension(list.enter(tag::sequence)));
    while (!list.atEnd());
    return extensions;
}

Bytes encodeExtensions(const std::vector<Extension>& extensions) {
    DerWriter writer;
    writer.sequence([&](DerWriter& list) {
        for (const Extension& extension : extensions) {
            list.sequence([&](DerWriter& fields) {
                fields.oid(extension.oid);
                if (extension.critical)
                    fields.boolean(true);
                fields.octetString(extension.value);
            });
        }
    });
    return writer.take();
}

}  // namespace asn1
