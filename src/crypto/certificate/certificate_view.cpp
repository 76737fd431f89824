#include "crypto/certificate/certificate_view.h"

#include "core/check.h"
#include "core/log.h"

#include <prsht.h>

#include <cryptuiapi.h>

#include <utility>

namespace Corvane::Crypto {

void viewCertificate(const Certificate& certificate) {
    writeLog(LogLevel::debug, L"Corvane::Crypto::viewCertificate", L"certificate: ", certificate);
    CRYPTUI_VIEWCERTIFICATE_STRUCTW view{};
    view.dwSize = sizeof(view);
    view.pCertContext = certificate.context();
    if (::CryptUIDlgViewCertificateW(&view, nullptr))
        return;
    const DWORD error = ::GetLastError();
    if (error != ERROR_CANCELLED)
        failCrypto(E_CRYPTO, L"CryptUIDlgViewCertificateW", error);
}

SharedCertificate selectCertificateFromStore(const CertificateStore& store) {
    writeLog(LogLevel::debug, L"Corvane::Crypto::selectCertificateFromStore", L"[in] store name: ",
             store.name(), L" [in] location: ", store.location());
    CertificateContext picked(::CryptUIDlgSelectCertificateFromStore(
        store.handle(), nullptr, nullptr, nullptr, CRYPTUI_SELECT_LOCATION_COLUMN, 0, nullptr));
    return picked ? std::make_shared<Certificate>(std::move(picked)) : nullptr;
}

SharedCertificate selectCertificateFromStore(const std::wstring& storeName, unsigned storeLocation) {
    return selectCertificateFromStore(*CertificateStore::open(storeLocation, storeName, true, false));
}

}  // namespace Corvane::Crypto
