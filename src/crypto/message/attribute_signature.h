// The signature over a signer's attributes, verified by itself: it tells a forged signature from one that is
// good for another content, which the system reports alike.
#pragma once

#include "crypto/message/crypt_message.h"

#include <cstdint>

namespace Corvane::detail {

// What can be said of a question about a signature.
enum class Answer : std::uint8_t { unknown, no, yes };

// Whether the signature of that signer over its signed attributes was made with the certificate's key.
// Unknown where there are no attributes, or an algorithm or a provider for it is not here.
Answer verifyAttributes(const CryptMessage& message, DWORD index, PCCERT_CONTEXT certificate);

}  // namespace Corvane::detail
