// The failures of message functions.
#pragma once

// The widest forms of the structures; cbSize tells which form a caller has.
#define CMSG_SIGNER_ENCODE_INFO_HAS_CMS_FIELDS
#define CMSG_SIGNED_ENCODE_INFO_HAS_CMS_FIELDS
#define CMSG_ENVELOPED_ENCODE_INFO_HAS_CMS_FIELDS
#include "../failure.h"

namespace Corvane::Platform::Messages {

template <class Body>
bool succeeds(Body&& body) noexcept {
    return succeedsWith<Codes{CRYPT_E_ASN1_EOD, CRYPT_E_ASN1_BADTAG, E_OUTOFMEMORY, E_UNEXPECTED}>(body);
}

inline DWORD sizeOf(View bytes) {
    return bytes.size() <= MAXDWORD ? static_cast<DWORD>(bytes.size()) : (fail(E_INVALIDARG), DWORD{0});
}

}  // namespace Corvane::Platform::Messages
