// Which certificates a search is for, as scripts say it in a small JSON object:
//
//     {"name": "...", "serialNumber": "hex", "hash": "hex", "hasPrivateKeyOnly": true, "archived": false,
//      "storeName": "My", "storeLocation": "user" | "machine" | 1 | 2}
//
// Every key may be left out, and then nothing is asked about it. Unknown keys are ignored.
#pragma once

#include "crypto/certificate/certificate.h"

#include <json/forwards.h>

#include <functional>
#include <string>
#include <string_view>

namespace Corvane {

using CertificateFilter = std::function<bool(const SharedCertificate&)>;

namespace detail {

// Accepts every certificate.
struct CertSelectAllFn {
    bool operator()(const SharedCertificate&) const noexcept { return true; }
};

struct CertCustomFilterFn {
    // The subject's simple display name, letter case included; empty asks nothing.
    std::wstring name;
    // Most significant byte first; null or empty asks nothing.
    SharedBytes serialNumber;
    // The SHA-1 thumbprint; null or empty asks nothing.
    SharedBytes hash;
    bool privateKeyOnly = false;
    bool archived = false;
    bool archivedGiven = false;
    // Where to search: empty is the standard stores, 0 both locations.
    std::wstring storeName;
    unsigned storeLocation = 0;

    // An empty text, one that is not JSON and one that is no object give the filter that asks nothing.
    // Throws Exception E_CERT_JSON_FILTER where a known key has a value of the wrong type or form.
    static CertCustomFilterFn parse(std::wstring_view text);

    // Throws what reading the certificate throws.
    bool operator()(const SharedCertificate& certificate) const;
};

// 1 (machine) or 2 (user) from "machine", "user" or the number itself.
// Throws std::invalid_argument "Invalid store location".
unsigned parseStoreLocation(const Json::Value& value);

}  // namespace detail
}  // namespace Corvane
