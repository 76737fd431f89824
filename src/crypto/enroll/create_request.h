// PKCS #10 requests (RFC 2986) with a new key in a container of a CryptoAPI provider.
#pragma once

#include "binary/bytes.h"
#include "crypto/provider/provider_record.h"

#include <json/forwards.h>

#include <functional>
#include <string>

namespace Corvane {

struct RequestParameters {
    std::wstring containerName;        // of a container that does not exist yet
    DWORD keySpec = 0;                 // AT_KEYEXCHANGE or AT_SIGNATURE
    SharedBytes distinguishedName;     // a Name in DER, which goes in as it is
    SharedBytes extensions;            // Extensions in DER, likewise
    SharedBytes enrollmentParameters;  // one more attribute in DER; null: none
    bool exportable = false;
    bool silent = false;  // shows no dialog and fails where one is needed
};

// What is said of the token on which a container lies, by the container's unique name: null where it lies on
// none.
using TokenOfContainer = std::function<Json::Value(const std::wstring& uniqueName)>;

// Makes the container and a key in it and returns the request in DER, signed with the key by GOST
// R 34.10-2001 whatever the provider: one that cannot do that fails. A failure after the first step leaves
// the new container behind, with the key where it was made.
//
// Throws CryptoException E_CRYPTO_PROVIDER where there is no such provider or the container exists already;
// E_CRYPTO_GEN_KEY, E_CRYPTO_EXPORT_PUBLIC_KEY_INFO, E_CERT_EXT_DECODE for enrollmentParameters that are no
// attribute, E_CRYPTO_SIGN_CERTIFICATE.
Bytes createCertificationRequest(const ProviderRecord& record, const RequestParameters& parameters);

// The same as JSON text: "request" in Base64, "path", the unique name of the container, and "token", where it
// does not lie in the registry and `tokenOf` knows its token. Throws E_CRYPTO_PROVIDER_PARAM besides.
std::wstring createCertificationRequestEx(const ProviderRecord& record, const RequestParameters& parameters,
                                          const TokenOfContainer& tokenOf);

}  // namespace Corvane
