#include "crypto/request/extensions_json.h"

#include "asn1/encoders/der_writer.h"
#include "asn1/encoders/object_identifier.h"
#include "asn1/pkix/extensions.h"
#include "binary/base64.h"
#include "core/exception.h"
#include "core/json.h"
#include "core/log.h"
#include "crypto/request/general_names.h"

#include <json/value.h>

#include <algorithm>
#include <string>
#include <utility>

namespace Corvane::Crypto {
namespace {

using asn1::DerWriter;

[[noreturn]] void refuse(std::string_view member, const std::string& why) {
    throw JsonException(E_REQUEST_EXTENSIONS, member.empty() ? why : std::string(member) + ": " + why);
}

// RFC 5280 4.2.1.12, and the one by which Windows lets cards log on.
constexpr std::pair<std::string_view, std::string_view> purposes[] = {
    {"serverAuth", "1.3.6.1.5.5.7.3.1"},          {"clientAuth", "1.3.6.1.5.5.7.3.2"},
    {"codeSigning", "1.3.6.1.5.5.7.3.3"},         {"emailProtection", "1.3.6.1.5.5.7.3.4"},
    {"timeStamping", "1.3.6.1.5.5.7.3.8"},        {"OCSPSigning", "1.3.6.1.5.5.7.3.9"},
    {"smartcardLogon", "1.3.6.1.4.1.311.20.2.2"},
};

Bytes encodeKeyUsage(const Json::Value& names) {
    std::uint32_t bits = 0;
    for (const Json::Value& name : names) {
        const auto bit = asn1::keyUsageBit(name.isString() ? name.asString() : std::string());
        if (!bit)
            refuse("keyUsage", "unknown usage");
        bits |= std::uint32_t{1} << *bit;
    }
    return DerWriter().namedBits(bits).take();
}

std::string oidOf(const Json::Value& value, std::string_view member) {
    std::string text = value.isString() ? value.asString() : std::string();
    if (!asn1::isOid(text))
        refuse(member, "no identifier: " + text);
    return text;
}

Bytes encodeExtendedKeyUsage(const Json::Value& names) {
    DerWriter writer;
    writer.sequence([&](DerWriter& list) {
        for (const Json::Value& name : names) {
            const auto* known = std::ranges::find_if(purposes, [&](const auto& purpose) {
                return name.isString() && name.asString() == purpose.first;
            });
            list.oid(known == std::end(purposes) ? oidOf(name, "extendedKeyUsage")
                                                 : std::string(known->second));
        }
    });
    return writer.take();
}

Bytes encodePolicies(const Json::Value& identifiers) {
    DerWriter writer;
    writer.sequence([&](DerWriter& list) {
        for (const Json::Value& one : identifiers)
            list.sequence([&](DerWriter& information) { information.oid(oidOf(one, "policies")); });
    });
    return writer.take();
}

struct Member {
    const char* name;
    std::string_view oid;
    bool critical;
    Bytes (*encode)(const Json::Value& values);
};

constexpr Member members[] = {
    {"keyUsage", asn1::keyUsageOid, true, encodeKeyUsage},
    {"extendedKeyUsage", asn1::extendedKeyUsageOid, false, encodeExtendedKeyUsage},
    {"policies", asn1::certificatePoliciesOid, false, encodePolicies},
    {"subjectAltName", asn1::subjectAltNameOid, false, encodeGeneralNames},
};

// Throws for a member of an object that nobody asks for: it would be lost in silence.
void expectOnly(const Json::Value& object, std::string_view where,
                std::initializer_list<std::string_view> known) {
    for (const std::string& name : object.getMemberNames()) {
        if (std::ranges::find(known, name) == known.end())
            refuse(where, "unknown member: " + name);
    }
}

bool readCritical(const Json::Value& object, std::string_view where, bool otherwise) {
    const Json::Value& critical = object["critical"];
    if (!critical.isNull() && !critical.isBool())
        refuse(where, "\"critical\" is true or false");
    return critical.isNull() ? otherwise : critical.asBool();
}

asn1::Extension readMember(const Member& member, const Json::Value& value) {
    const bool plain = !value.isObject();
    if (!plain)
        expectOnly(value, member.name, {"critical", "values"});
    const Json::Value& values = plain ? value : value["values"];
    if (!values.isArray() || values.empty())
        refuse(member.name, "an array of values was expected");
    return {std::string(member.oid),
            plain ? member.critical : readCritical(value, member.name, member.critical),
            member.encode(values)};
}

asn1::Extension readOther(const Json::Value& value) {
    if (!value.isObject())
        refuse("other", "an object was expected");
    expectOnly(value, "other", {"oid", "critical", "value"});
    asn1::Extension extension;
    extension.oid = oidOf(value["oid"], "other");
    extension.critical = readCritical(value, "other", false);
    if (!value["value"].isString())
        refuse("other", "a value in Base64 was expected");
    extension.value = base64ToBin(value["value"].asString());
    try {
        asn1::BerReader reader(extension.value);
        reader.skip();
        reader.expectEnd();
    } catch (const asn1::Asn1Exception& error) {
        refuse("other", extension.oid + ": " + error.what());
    }
    return extension;
}

std::vector<asn1::Extension> readAll(const Json::Value& root) {
    if (!root.isObject())
        refuse("", "an object was expected");
    expectOnly(root, "", {"keyUsage", "extendedKeyUsage", "policies", "subjectAltName", "other"});
    std::vector<asn1::Extension> extensions;
    for (const Member& member : members) {
        if (root.isMember(member.name))
            extensions.push_back(readMember(member, root[member.name]));
    }
    const Json::Value& others = root["other"];
    if (!others.isNull() && !others.isArray())
        refuse("other", "an array was expected");
    for (const Json::Value& other : others)
        extensions.push_back(readOther(other));
    return extensions;
}

}  // namespace

Bytes encodeExtensionsJson(std::wstring_view json) {
    writeLog(LogLevel::debug, L"Corvane::Crypto::encodeExtensions", L"[in] length: ", json.size());
    const std::vector<asn1::Extension> extensions = readAll(readJson(json, E_REQUEST_EXTENSIONS));
    if (extensions.empty())
        refuse("", "there is no extension");
    for (auto one = extensions.begin(); one != extensions.end(); ++one) {
        if (asn1::findExtension({one + 1, extensions.end()}, one->oid))
            refuse(one->oid, "twice (RFC 5280 4.2)");
    }
    return asn1::encodeExtensions(extensions);
}

}  // namespace Corvane::Crypto
