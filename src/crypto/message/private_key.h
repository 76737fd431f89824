// The private key that belongs to a certificate.
#pragma once

#include "core/errors.h"
#include "core/handles.h"
#include "crypto/certificate/certificate.h"

#include <windows.h>

#include <ncrypt.h>

namespace Corvane::detail {

// A key of a CryptoAPI provider or, where the certificate's key is none, of a CNG provider, whose handle the
// message functions take in the same place. Released with the object, but for a handle that the system keeps
// with the certificate. Messages that use it are closed before.
class PrivateKey {
public:
    enum class Kind : std::uint8_t {
        any,
        cryptoApi,  // for functions that know no CNG keys
        kept,       // stays open with the certificate's context, for work that takes several calls
    };

    // The system may ask the user for the token or a password. Throws CryptoException with `descriptor`: the
    // first failure, where neither kind of key can be had.
    PrivateKey(const Certificate& certificate, const ErrorDescriptor& descriptor, Kind kind = Kind::any);
    PrivateKey(const PrivateKey&) = delete;
    PrivateKey& operator=(const PrivateKey&) = delete;
    ~PrivateKey();

    HCRYPTPROV_OR_NCRYPT_KEY_HANDLE handle() const noexcept { return handle_; }
    // AT_KEYEXCHANGE, AT_SIGNATURE or CERT_NCRYPT_KEY_SPEC.
    DWORD spec() const noexcept { return spec_; }

private:
    bool acquire(const Certificate& certificate, DWORD flags) noexcept;

    HCRYPTPROV_OR_NCRYPT_KEY_HANDLE handle_ = 0;
    DWORD spec_ = 0;
    BOOL isOwned_ = FALSE;
};

}  // namespace Corvane::detail
