#include "crypto/message/private_key.h"

#include "core/check.h"
#include "core/log.h"

namespace Corvane::detail {

bool PrivateKey::acquire(const Certificate& certificate, DWORD flags) noexcept {
    return ::CryptAcquireCertificatePrivateKey(certificate.context(), flags, nullptr, &handle_, &spec_,
                                               &isOwned_) != FALSE;
}

PrivateKey::PrivateKey(const Certificate& certificate, const ErrorDescriptor& descriptor, Kind kind) {
    writeLog(LogLevel::debug, L"Corvane::detail::PrivateKey", L"certificate: ", certificate);
    constexpr DWORD keeping = CRYPT_ACQUIRE_CACHE_FLAG | CRYPT_ACQUIRE_ALLOW_NCRYPT_KEY_FLAG;
    if (acquire(certificate, kind == Kind::kept ? keeping : 0))
        return;
    const DWORD error = ::GetLastError();
    // A card that was pulled out or a wrong password must not lead to a second question.
    const bool mayBeCng = error == static_cast<DWORD>(NTE_BAD_PROV_TYPE) ||
                          error == static_cast<DWORD>(NTE_PROV_TYPE_NOT_DEF) ||
                          error == static_cast<DWORD>(NTE_KEYSET_NOT_DEF) ||
                          error == static_cast<DWORD>(NTE_BAD_KEYSET);
    if (kind != Kind::any || !mayBeCng || !acquire(certificate, CRYPT_ACQUIRE_ONLY_NCRYPT_KEY_FLAG))
        failCrypto(descriptor, L"CryptAcquireCertificatePrivateKey", error);
}

PrivateKey::~PrivateKey() {
    if (!isOwned_)
        return;
    const LastErrorKeeper keeper;
    if (spec_ == CERT_NCRYPT_KEY_SPEC)
        ::NCryptFreeObject(handle_);
    else
        ::CryptReleaseContext(handle_, 0);
}

}  // namespace Corvane::detail
