// Certification requests with keys that are made on a token and never leave it.
#pragma once

#include "core/secret.h"
#include "token/enroll/gost_request.h"

#include <string>

namespace Corvane {

// Makes a pair of GOST R 34.10-2001 keys on the token in `slot` (the description of its slot) and returns the
// JSON text of "path", where the pair lies; "request", PKCS #10 in Base64; and "sid", the user's security
// identifier. A failure before the keys are made leaves the token as it was; one after that leaves them
// there, where the token's own software shows them. The session and the module are given back in any case,
// and the user is logged out.
//
// Throws Exception E_TOKEN_SLOT and what cryptoki::driverPathFor, cryptoki::Pkcs11Module, cryptoki::Session
// and detail::checkRequestParts throw. Takes as long as the token does.
std::wstring createCertificationRequestGOST(const std::wstring& slot, SecretNarrowText pin,
                                            const detail::RequestParts& parts);

}  // namespace Corvane
