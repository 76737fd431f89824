// The names of subjectAltName (RFC 5280 4.2.1.6) from JSON. Pure, any thread.
#pragma once

#include "binary/bytes.h"

#include <json/forwards.h>

namespace Corvane::Crypto {

// The value of the extension, from an array of objects with one member each:
//
//     {"email": "i@example.org"}   {"dns": "example.org"}   {"uri": "https://example.org/"}
//     {"ip": "192.0.2.1"}          {"directoryName": "CN=..."}   {"registeredId": "1.2.3"}
//     {"upn": "i@example.org"}     the name by which Windows knows a user
//
// Throws JsonException E_REQUEST_EXTENSIONS where it is not that, NameTextException for a directoryName.
Bytes encodeGeneralNames(const Json::Value& names);

}  // namespace Corvane::Crypto
