// Addresses of the Internet Protocol as octets. Pure, any thread.
#pragma once

#include "binary/bytes.h"

#include <string_view>

namespace Corvane::Crypto {

// Four octets of "192.0.2.1" (RFC 1123 2.1, no leading zeros) or sixteen of "2001:db8::1" (RFC 4291 2.2, also
// with an IPv4 address at the end); none where the text is neither.
Bytes parseIpAddress(std::string_view text);

}  // namespace Corvane::Crypto
