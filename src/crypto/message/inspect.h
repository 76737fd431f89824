// What can be said of a signed message, for each of its signers, where verification says yes or no.
#pragma once

#include "crypto/message/crypto_api_provider.h"

#include <string>

namespace Corvane::Crypto {

// JSON about a message: "contentType", "hasContent", "verdict" and "signers", each with
//   - "certificate" (as getCertDescriptionJson) where one is found, and always "issuer" and "serialNumber",
//     or "keyIdentifier" where the message names its signer by that;
//   - "digestAlgorithm" and "signatureAlgorithm", dotted identifiers, and "signingTime" where it is stated;
//   - "digestAgrees": whether the content is what was signed, and "signatureGood": whether the signature was
//     made by the certificate's key; null where that cannot be told. Without signed attributes the signature
//     is over the content itself, and the two cannot be told apart when it does not hold;
//   - "error" where the system gave one, and "chain" with the "status" for `flags` (Certificate::verify) and
//     its "names", or a null status and an "error" where the system builds no chain at all;
//   - "verdict": "good"; "untrusted", a good signature of a certificate whose chain is not; "changed",
//     another content; "forged", no signature of that key; "noCertificate"; "noContent"; "unknown", where an
//     algorithm is not here, or no chain, or the system refuses it for another reason.
// The message's verdict is its signers', the first that is not "good"; "unsigned" where there are none.
//
// `data` is what a detached message is for, null for an attached one or where there is none. Certificates are
// looked up in `supplied`, then in the message, whose certificates serve for the chains too. Throws, where
// the message cannot be read, what CryptoApiProvider's operations do; CryptoException E_CRYPTO_VERIFY where
// data are given for a message with content, for another kind of message, and beyond 1,000 signers.
std::wstring inspectSignature(const Bytes& signature, const Bytes* data, const Certificates& supplied,
                              DWORD flags);
// The same for data in a stream; cancelling is seen before each signer, too.
std::wstring inspectSignature(const Bytes& signature, Stream::IBinaryStream& data,
                              const Certificates& supplied, DWORD flags, const SharedProgress& progress);
// The same for an attached message in a stream.
std::wstring inspectSignature(Stream::IBinaryStream& signature, const Certificates& supplied, DWORD flags,
                              const SharedProgress& progress);

}  // namespace Corvane::Crypto
