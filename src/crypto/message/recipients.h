// Who an enveloped message is for, and which of them is here.
#pragma once

#include "core/progress.h"
#include "crypto/message/crypt_message.h"
#include "crypto/message/private_key.h"

#include <memory>

namespace Corvane::detail {

// More keys than anybody has that a message is for. A message that names one again and again is not tried
// further: each may take a token its time.
inline constexpr int keyLimit = 100;

// Opens the content of a message whose recipients are known by now: of each recipient in turn, the
// certificates with a private key in the user's store "My" and then in the machine's are tried, `keyLimit` of
// them. Throws std::runtime_error "certificate not found" where there is none; CryptoException
// E_CRYPTO_DECRYPT, with the error of the first key that failed where none of those found opens it, or that
// of a store that could not be searched; E_CERT_STORE_OPEN; E_CERT_PROPERTY; Exception E_CANCELED, which is
// seen before each recipient; and what the message's output throws. The key, which must outlive the message,
// is the caller's.
std::unique_ptr<PrivateKey> decryptMessage(CryptMessage& message, const SharedProgress& progress);

}  // namespace Corvane::detail
