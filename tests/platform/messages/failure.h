// How failures inside the stand-in become the last error of its functions.
#pragma once

#include "../ber/ber.h"

#include <windows.h>

// The widest forms of the structures; cbSize tells which form a caller has.
#define CMSG_SIGNER_ENCODE_INFO_HAS_CMS_FIELDS
#define CMSG_SIGNED_ENCODE_INFO_HAS_CMS_FIELDS
#define CMSG_ENVELOPED_ENCODE_INFO_HAS_CMS_FIELDS
#include <wincrypt.h>

#include <new>

namespace Corvane::Platform::Messages {

// A code of GetLastError.
struct Failure {
    DWORD code;
};

[[noreturn]] inline void fail(LONG code) {
    throw Failure{static_cast<DWORD>(code)};
}

// For calls of the system.
template <class Result>
Result must(Result result) {
    if (!result)
        throw Failure{::GetLastError()};
    return result;
}

template <class Body>
bool succeeds(Body&& body) noexcept {
    try {
        body();
        return true;
    } catch (const Failure& failure) {
        ::SetLastError(failure.code);
    } catch (const Truncated&) {
        ::SetLastError(static_cast<DWORD>(CRYPT_E_ASN1_EOD));
    } catch (const BerError&) {
        ::SetLastError(static_cast<DWORD>(CRYPT_E_ASN1_BADTAG));
    } catch (const std::bad_alloc&) {
        ::SetLastError(static_cast<DWORD>(E_OUTOFMEMORY));
    } catch (...) {
        ::SetLastError(static_cast<DWORD>(E_UNEXPECTED));
    }
    return false;
}

inline View viewOf(const CRYPT_DATA_BLOB& blob) {
    return {blob.pbData, blob.cbData};
}
inline View viewOf(const CRYPT_BIT_BLOB& blob) {
    return {blob.pbData, blob.cbData};
}
inline DWORD sizeOf(View bytes) {
    return bytes.size() <= MAXDWORD ? static_cast<DWORD>(bytes.size()) : (fail(E_INVALIDARG), DWORD{0});
}

}  // namespace Corvane::Platform::Messages
