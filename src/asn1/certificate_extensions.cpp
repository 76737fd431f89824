#include "asn1/certificate_extensions.h"

#include <algorithm>

namespace asn1 {
namespace {

struct UsageBit {
    const char* name;
    std::size_t bit;  // RFC 5280 4.2.1.3
};

constexpr UsageBit usageBits[] = {
    {"crlSign", 6},          {"dataEncipherment", 3}, {"decipherOnly", 8},
    {"digitalSignature", 0}, {"encipherOnly", 7},     {"keyAgreement", 4},
    {"keyCertSign", 5},      {"keyEncipherment", 2},  {"nonRepudiation", 1},
};

// The one value that an extension consists of.
DerReader enterWhole(View value, std::uint8_t identifier) {
    DerReader outer(value);
    const DerReader inner = outer.enter(identifier);
    outer.expectEnd();
    return inner;
}

// The extensions' list inside TBSCertificate, or an empty reader (RFC 5280 4.1).
DerReader enterExtensions(View certificate) {
    DerReader signedCertificate = enterWhole(certificate, tag::sequence);
    DerReader body = signedCertificate.enter(tag::sequence);
    body.skipOptional(tag::context(0));  // version
    body.read(tag::integer);             // serialNumber
    for (int i = 0; i < 5; ++i)          // signature, issuer, validity, subject, subjectPublicKeyInfo
        body.read(tag::sequence);
    while (!body.atEnd() && !body.isNext(tag::context(3)))
        body.skip();  // the unique identifiers
    if (body.atEnd())
        return DerReader({});
    const View list = body.read(tag::context(3));
    body.expectEnd();
    return enterWhole(list, tag::sequence);
}

}  // namespace

std::vector<Extension> readExtensions(View certificate) {
    std::vector<Extension> extensions;
    DerReader list = enterExtensions(certificate);
    while (!list.atEnd()) {
        DerReader fields = list.enter(tag::sequence);
        Extension extension;
        extension.oid = fields.readOid();
        if (fields.isNext(tag::boolean))
            extension.critical = fields.readBoolean();
        extension.value = fields.read(tag::octetString);
        fields.expectEnd();
        extensions.push_back(std::move(extension));
    }
    return extensions;
}

const Extension* findExtension(const std::vector<Extension>& extensions, std::string_view oid) noexcept {
    const auto found = std::find_if(extensions.begin(), extensions.end(),
                                    [&](const Extension& extension) { return extension.oid == oid; });
    return found == extensions.end() ? nullptr : &*found;
}

std::vector<std::string> readKeyUsages(View value) {
    DerReader reader(value);
    const BitString bits = reader.readBitString();
    reader.expectEnd();
    std::vector<std::string> names;
    for (const UsageBit& usage : usageBits) {
        if (bits.test(usage.bit))
            names.emplace_back(usage.name);
    }
    return names;
}

std::vector<std::string> readExtendedKeyUsages(View value) {
    std::vector<std::string> purposes;
    DerReader list = enterWhole(value, tag::sequence);
    while (!list.atEnd())
        purposes.push_back(list.readOid());
    return purposes;
}

std::vector<std::string> readPolicies(View value) {
    std::vector<std::string> policies;
    DerReader list = enterWhole(value, tag::sequence);
    while (!list.atEnd()) {
        DerReader information = list.enter(tag::sequence);
        policies.push_back(information.readOid());
        information.skipOptional(tag::sequence);  // qualifiers
        information.expectEnd();
    }
    return policies;
}

}  // namespace asn1
