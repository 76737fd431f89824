// From a name to its text, see distinguished_name.h.
#include "asn1/decoders/ber_reader.h"
#include "asn1/encoders/der_writer.h"
#include "binary/hex.h"
#include "core/utf8.h"
#include "crypto/request/distinguished_name.h"
#include "crypto/request/name_attributes.h"

#include <algorithm>
#include <optional>

namespace Corvane::Crypto {
namespace {

using namespace asn1;

// UTF-16 with the most significant byte first.
std::optional<std::string> fromBmp(View contents) {
    if (contents.size() % 2 != 0)
        return std::nullopt;
    std::wstring text;
    for (std::size_t i = 0; i < contents.size(); i += 2)
        text += static_cast<wchar_t>(contents[i] << 8 | contents[i + 1]);
    return toUtf8(text);
}

// In UTF-8; nothing where the value is no text or has characters that its type does not have.
std::optional<std::string> stringIn(View value) {
    for (const std::uint8_t type : {tag::utf8String, tag::printableString, tag::ia5String, tag::numericString,
                                    tag::teletexString, tag::bmpString}) {
        BerReader reader(value);
        if (!reader.isNext(type))
            continue;
        const View contents = reader.read(type);
        if (type == tag::bmpString)
            return fromBmp(contents);
        std::string text(contents.begin(), contents.end());
        // Of the older type only what is certain.
        if (fitsStringType(type == tag::teletexString ? tag::ia5String : type, text))
            return text;
    }
    return std::nullopt;
}

// RFC 4514 2.4.
std::string escaped(std::string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool atEnd = i == 0 || i + 1 == text.size();
        if (std::string_view("\"+,;<>\\").find(c) != std::string_view::npos || (c == ' ' && atEnd) ||
            (c == '#' && i == 0))
            result += '\\';
        result += c;
    }
    return result;
}

std::string attributeText(const NameAttribute& attribute) {
    const NameAttributeType* known = findAttributeByOid(attribute.oid);
    const std::string type = known ? std::string(known->name) : attribute.oid;
    const std::optional<std::string> value = known ? stringIn(attribute.value) : std::nullopt;
    const bool readable = value && !value->empty() && value->find('\0') == std::string::npos &&
                          fitsStringType(known->stringType, *value);
    return type + '=' + (readable ? escaped(*value) : '#' + toUtf8(binToHex(attribute.value)));
}

std::string relativeText(const RelativeName& relative) {
    std::string text;
    for (const NameAttribute& attribute : relative)
        text += (text.empty() ? "" : "+") + attributeText(attribute);
    return text;
}

}  // namespace

std::wstring distinguishedNameText(const Name& name) {
    std::string text;
    std::for_each(name.rbegin(), name.rend(), [&text](const auto& relative) {
        text += (text.empty() ? "" : ",") + relativeText(relative);
    });
    return fromUtf8(text);
}

}  // namespace Corvane::Crypto
