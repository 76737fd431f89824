// Certification requests looked at: what they ask for, and whether who asks has the key.
#pragma once

#include "binary/bytes.h"

#include <string>

namespace Corvane::Crypto {

// The JSON text of a request in DER: the members of describeRequest() and "signatureValid"; where the
// signature could not be judged, for want of its algorithm for example, that is false and "signatureError"
// tells the system's number and text. Throws Exception E_CERTIFICATION_REQUEST where it is no request.
std::wstring getCertificationRequestJson(const Bytes& request);

}  // namespace Corvane::Crypto
