// Templates of PKCS#11: attributes of objects with their values, in the order in which they are added.
#pragma once

#include "binary/bytes.h"
#include "token/cryptoki/cryptoki.h"

#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace cryptoki {

class AttributeTemplate {
public:
    AttributeTemplate& number(CK_ATTRIBUTE_TYPE type, CK_ULONG value);
    AttributeTemplate& boolean(CK_ATTRIBUTE_TYPE type, bool value);  // of one byte
    AttributeTemplate& bytes(CK_ATTRIBUTE_TYPE type, std::span<const std::uint8_t> value);
    // The DER encoding of an object identifier in dotted text. Throws asn1::Asn1Exception.
    AttributeTemplate& identifier(CK_ATTRIBUTE_TYPE type, std::string_view dotted);

    // As modules take them; point into this template and are valid until it changes.
    std::vector<CK_ATTRIBUTE> attributes();

private:
    std::vector<std::pair<CK_ATTRIBUTE_TYPE, Corvane::Bytes>> values_;
};

}  // namespace cryptoki
