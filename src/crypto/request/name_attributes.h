// The attributes of names that have a short name, and the type of string that each is written as (RFC
// 5280 4.1.2.4 and appendix A; RFC 4519; RFC 2985). Pure, any thread.
#pragma once

#include <cstdint>
#include <string_view>

namespace Corvane::Crypto {

struct NameAttributeType {
    std::string_view name;
    std::string_view oid;
    std::uint8_t stringType;
};

// By its short name, upper or lower case alike; null where it has none. Of several names of one identifier
// the first in the table is the one that findAttributeByOid() gives.
const NameAttributeType* findAttributeByName(std::string_view name) noexcept;
const NameAttributeType* findAttributeByOid(std::string_view oid) noexcept;

}  // namespace Corvane::Crypto
