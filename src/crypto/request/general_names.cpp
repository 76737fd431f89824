#include "crypto/request/general_names.h"

#include "asn1/encoders/der_writer.h"
#include "asn1/encoders/object_identifier.h"
#include "core/exception.h"
#include "core/utf8.h"
#include "crypto/request/distinguished_name.h"
#include "crypto/request/ip_address.h"

#include <json/value.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace Corvane::Crypto {
namespace {

using asn1::DerWriter;
using asn1::tag::context;
using asn1::tag::contextPrimitive;

constexpr std::string_view userPrincipalName = "1.3.6.1.4.1.311.20.2.3";

[[noreturn]] void refuse(const std::string& why) {
    throw JsonException(E_REQUEST_EXTENSIONS, "subjectAltName: " + why);
}

asn1::View viewOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// A NUL would make one name of it for some readers and another for others.
void expectText(std::uint8_t type, const std::string& text) {
    if (text.empty() || text.find('\0') != std::string::npos || !asn1::fitsStringType(type, text))
        refuse("a name that is empty or has characters that it may not have: " + text);
}

// An IA5String under its own number.
template <unsigned number>
void writeAscii(DerWriter& names, const std::string& text) {
    expectText(asn1::tag::ia5String, text);
    names.value(contextPrimitive(number), viewOf(text));
}

void writeAddress(DerWriter& names, const std::string& text) {
    const Bytes octets = parseIpAddress(text);
    if (octets.empty())
        refuse("no address: " + text);
    names.value(contextPrimitive(7), octets);
}

void writeDirectoryName(DerWriter& names, const std::string& text) {
    const Bytes name = encodeDistinguishedName(fromUtf8(text));
    names.nest(context(4), [&](DerWriter& choice) { choice.encoded(name); });
}

void writeIdentifier(DerWriter& names, const std::string& text) {
    if (!asn1::isOid(text))
        refuse("no identifier: " + text);
    names.value(contextPrimitive(8), asn1::oidContents(text));
}

void writePrincipal(DerWriter& names, const std::string& text) {
    expectText(asn1::tag::utf8String, text);
    names.nest(context(0), [&](DerWriter& other) {
        other.oid(userPrincipalName).nest(context(0), [&](DerWriter& value) {
            value.text(asn1::tag::utf8String, text);
        });
    });
}

struct Kind {
    std::string_view name;
    void (*write)(DerWriter& names, const std::string& text);
};

constexpr Kind kinds[] = {
    {"email", writeAscii<1>},
    {"dns", writeAscii<2>},
    {"uri", writeAscii<6>},
    {"ip", writeAddress},
    {"directoryName", writeDirectoryName},
    {"registeredId", writeIdentifier},
    {"upn", writePrincipal},
};

void writeName(DerWriter& names, const Json::Value& name) {
    if (!name.isObject() || name.size() != 1)
        refuse("a name is an object with one member");
    const std::string key = name.getMemberNames().front();
    const auto* kind = std::ranges::find(kinds, key, &Kind::name);
    if (kind == std::end(kinds) || !name[key].isString())
        refuse("unknown name: " + key);
    kind->write(names, name[key].asString());
}

}  // namespace

Bytes encodeGeneralNames(const Json::Value& names) {
    if (!names.isArray() || names.empty())
        refuse("an array of names was expected");
    DerWriter writer;
    writer.sequence([&](DerWriter& list) {
        for (const Json::Value& name : names)
            writeName(list, name);
    });
    return writer.take();
}

}  // namespace Corvane::Crypto
