#include "asn1/decoders/x509_extensions.h"

#include <algorithm>
#include <iterator>

namespace asn1 {
namespace {

struct UsageBit {
    const char* name;
    unsigned bit;  // RFC 5280 4.2.1.3
};

constexpr UsageBit usageBits[] = {
    {"crlSign", 6},          {"dataEncipherment", 3}, {"decipherOnly", 8},
    {"digitalSignature", 0}, {"encipherOnly", 7},     {"keyAgreement", 4},
    {"keyCertSign", 5},      {"keyEncipherment", 2},  {"nonRepudiation", 1},
};

// The extensions' list inside TBSCertificate, or an empty reader (RFC 5280 4.1).
BerReader enterExtensions(View certificate) {
    BerReader body = BerReader(certificate, Rules::ber).enter(tag::sequence).enter(tag::sequence);
    body.skipOptional(tag::context(0));  // version
    body.read(tag::integer);             // serialNumber
    for (int i = 0; i < 5; ++i)          // signature, issuer, validity, subject, subjectPublicKeyInfo
        body.read(tag::sequence);
    while (!body.atEnd() && !body.isNext(tag::context(3)))
        body.skip();  // the unique identifiers
    return body.atEnd() ? body : body.enter(tag::context(3)).enter(tag::sequence);
}

Extension readExtension(BerReader fields) {
    Extension extension;
    extension.oid = fields.readOid();
    if (fields.isNext(tag::boolean))
        extension.critical = fields.readBoolean();
    Bytes joined;
    const View value = fields.readOctetString(joined);
    extension.value.assign(value.begin(), value.end());
    return extension;
}

}  // namespace

std::vector<Extension> readExtensions(View certificate) {
    std::vector<Extension> extensions;
    for (BerReader list = enterExtensions(certificate); !list.atEnd();) {
        const BerReader fields = list.enter(tag::sequence);
        try {
            extensions.push_back(readExtension(fields));
        } catch (const Asn1Exception&) {
            // It does not hide the others.
        }
    }
    return extensions;
}

const Extension* findExtension(const std::vector<Extension>& extensions, std::string_view oid) noexcept {
    const auto found = std::find_if(extensions.begin(), extensions.end(),
                                    [&](const Extension& extension) { return extension.oid == oid; });
    return found == extensions.end() ? nullptr : &*found;
}

std::vector<std::string> readKeyUsages(View value) {
    Bytes joined;
    const BitString bits = BerReader(value, Rules::ber).readBitString(joined);
    std::vector<std::string> names;
    for (const UsageBit& usage : usageBits) {
        if (bits.test(usage.bit))
            names.emplace_back(usage.name);
    }
    return names;
}

std::optional<unsigned> keyUsageBit(std::string_view name) noexcept {
    const auto* found =
        std::ranges::find_if(usageBits, [&](const UsageBit& usage) { return usage.name == name; });
    return found == std::end(usageBits) ? std::nullopt : std::optional(found->bit);
}

std::vector<std::string> readExtendedKeyUsages(View value) {
    std::vector<std::string> purposes;
    BerReader list = BerReader(value, Rules::ber).enter(tag::sequence);
    while (!list.atEnd())
        purposes.push_back(list.readOid());
    return purposes;
}

std::vector<std::string> readPolicies(View value) {
    std::vector<std::string> policies;
    BerReader list = BerReader(value, Rules::ber).enter(tag::sequence);
    while (!list.atEnd())
        policies.push_back(list.enter(tag::sequence).readOid());  // qualifiers may follow
    return policies;
}

}  // namespace asn1
