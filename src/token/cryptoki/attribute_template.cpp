#include "token/cryptoki/attribute_template.h"

#include "asn1/encoders/der_writer.h"

namespace cryptoki {

AttributeTemplate& AttributeTemplate::number(CK_ATTRIBUTE_TYPE type, CK_ULONG value) {
    return bytes(type, {reinterpret_cast<const std::uint8_t*>(&value), sizeof value});
}

AttributeTemplate& AttributeTemplate::boolean(CK_ATTRIBUTE_TYPE type, bool value) {
    const std::uint8_t byte = value ? CK_TRUE : CK_FALSE;
    return bytes(type, {&byte, 1});
}

AttributeTemplate& AttributeTemplate::bytes(CK_ATTRIBUTE_TYPE type, std::span<const std::uint8_t> value) {
    values_.emplace_back(type, Corvane::Bytes(value.begin(), value.end()));
    return *this;
}

AttributeTemplate& AttributeTemplate::identifier(CK_ATTRIBUTE_TYPE type, std::string_view dotted) {
    asn1::DerWriter writer;
    return bytes(type, writer.oid(dotted).bytes());
}

std::vector<CK_ATTRIBUTE> AttributeTemplate::attributes() {
    std::vector<CK_ATTRIBUTE> list;
    list.reserve(values_.size());
    for (auto& [type, value] : values_)
        list.push_back({type, value.data(), static_cast<CK_ULONG>(value.size())});
    return list;
}

}  // namespace cryptoki
