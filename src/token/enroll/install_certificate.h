// Certificates on tokens, beside the keys that they are for.
#pragma once

#include "binary/bytes.h"
#include "core/secret.h"

#include <functional>
#include <string>
#include <string_view>

namespace Corvane {

// Writes a certificate onto the token and beside the key that `containerPath` names, as
// createCertificationRequestGOST() or Crypto::getTokenContainers() returned it. `decode` is called for its
// DER encoding once the user is logged in, and what it throws passes on. Whether the key is there is not
// asked.
//
// Throws Exception E_TOKEN_CONTAINER_PATH for another text, E_TOKEN_SLOT, E_TOKEN_BIND_CERTIFICATE where the
// token does not take it, and what cryptoki::driverPathFor, cryptoki::Pkcs11Module and cryptoki::Session
// throw; asn1::Asn1Exception where the bytes are no certificate. Nothing stays on the token then.
void installCertificateResponseGOST(std::wstring_view response, const std::wstring& containerPath,
                                    SecretNarrowText pin,
                                    const std::function<Bytes(std::wstring_view)>& decode);

}  // namespace Corvane
