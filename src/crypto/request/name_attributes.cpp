#include "crypto/request/name_attributes.h"

#include "asn1/base/values.h"

#include <algorithm>

namespace Corvane::Crypto {
namespace {

using namespace asn1::tag;

// The numbers of the Russian registers as the rules for qualified certificates have them: digits only.
constexpr NameAttributeType types[] = {
    {"CN", "2.5.4.3", utf8String},
    {"SN", "2.5.4.4", utf8String},
    {"SURNAME", "2.5.4.4", utf8String},
    {"SERIALNUMBER", "2.5.4.5", printableString},
    {"C", "2.5.4.6", printableString},
    {"L", "2.5.4.7", utf8String},
    {"ST", "2.5.4.8", utf8String},
    {"S", "2.5.4.8", utf8String},
    {"STREET", "2.5.4.9", utf8String},
    {"O", "2.5.4.10", utf8String},
    {"OU", "2.5.4.11", utf8String},
    {"title", "2.5.4.12", utf8String},
    {"T", "2.5.4.12", utf8String},
    {"description", "2.5.4.13", utf8String},
    {"postalCode", "2.5.4.17", utf8String},
    {"telephoneNumber", "2.5.4.20", printableString},
    {"givenName", "2.5.4.42", utf8String},
    {"G", "2.5.4.42", utf8String},
    {"GN", "2.5.4.42", utf8String},
    {"initials", "2.5.4.43", utf8String},
    {"I", "2.5.4.43", utf8String},
    {"generationQualifier", "2.5.4.44", utf8String},
    {"dnQualifier", "2.5.4.46", printableString},
    {"pseudonym", "2.5.4.65", utf8String},
    {"organizationIdentifier", "2.5.4.97", utf8String},
    {"DC", "0.9.2342.19200300.100.1.25", ia5String},
    {"UID", "0.9.2342.19200300.100.1.1", utf8String},
    {"emailAddress", "1.2.840.113549.1.9.1", ia5String},
    {"E", "1.2.840.113549.1.9.1", ia5String},
    {"email", "1.2.840.113549.1.9.1", ia5String},
    {"unstructuredName", "1.2.840.113549.1.9.2", utf8String},
    {"UN", "1.2.840.113549.1.9.2", utf8String},
    {"OGRN", "1.2.643.100.1", numericString},
    {"ОГРН", "1.2.643.100.1", numericString},
    {"SNILS", "1.2.643.100.3", numericString},
    {"СНИЛС", "1.2.643.100.3", numericString},
    {"INNLE", "1.2.643.100.4", numericString},
    {"ИННЮЛ", "1.2.643.100.4", numericString},
    {"OGRNIP", "1.2.643.100.5", numericString},
    {"ОГРНИП", "1.2.643.100.5", numericString},
    {"INN", "1.2.643.3.131.1.1", numericString},
    {"ИНН", "1.2.643.3.131.1.1", numericString},
};

constexpr char toLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isSameName(std::string_view one, std::string_view other) noexcept {
    return std::ranges::equal(one, other, {}, toLower, toLower);
}

}  // namespace

const NameAttributeType* findAttributeByName(std::string_view name) noexcept {
    const auto* found =
        std::ranges::find_if(types, [&](const auto& type) { return isSameName(type.name, name); });
    return found == std::end(types) ? nullptr : found;
}

const NameAttributeType* findAttributeByOid(std::string_view oid) noexcept {
    const auto* found = std::ranges::find(types, oid, &NameAttributeType::oid);
    return found == std::end(types) ? nullptr : found;
}

}  // namespace Corvane::Crypto
