#include "crypto/message/signer_lookup.h"

#include "binary/hex.h"
#include "core/check.h"
#include "core/log.h"
#include "crypto/api/blob.h"
#include "crypto/api/encoding.h"

namespace Corvane::detail {
namespace {

void logSigner(const CERT_INFO& signer) noexcept try {
    writeLog(LogLevel::debug, L"getSignerCertificateCallback", L"serialNumber: ",
             binToHex(toBigEndian(signer.SerialNumber)), L"| issuer: ",
             toText(signer.Issuer, CERT_X500_NAME_STR));
} catch (...) {
    // The search for the signer does not depend on the log.
}

}  // namespace

// In a store, which there is only where certificates are supplied, the system finds certificates by every way
// in which a message may name its signers.
SignerLookup::SignerLookup(const Certificates& supplied) {
    if (supplied.empty())
        return;
    supplied_ = CertificateStoreHandle(checkCrypto(::CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr),
                                                   E_CERT_STORE_OPEN, L"CertOpenStore"));
    for (const SharedCertificate& certificate : supplied) {
        checkCrypto(::CertAddCertificateContextToStore(supplied_.get(), certificate->context(),
                                                       CERT_STORE_ADD_USE_EXISTING, nullptr),
                    E_CERT_STORE_INSTALL, L"CertAddCertificateContextToStore");
    }
}

CertificateContext SignerLookup::find(CERT_INFO* signer, HCERTSTORE messageStore) const noexcept {
    if (!signer) {
        ::SetLastError(static_cast<DWORD>(CRYPT_E_NOT_FOUND));
        return {};
    }
    if (isLogEnabled(LogLevel::debug))
        logSigner(*signer);
    if (supplied_) {
        if (PCCERT_CONTEXT found =
                ::CertGetSubjectCertificateFromStore(supplied_.get(), messageEncoding, signer))
            return CertificateContext(found);
    }
    return CertificateContext(::CertGetSubjectCertificateFromStore(messageStore, messageEncoding, signer));
}

PCCERT_CONTEXT WINAPI SignerLookup::getSignerCertificateCallback(void* lookup, DWORD, PCERT_INFO signer,
                                                                 HCERTSTORE messageStore) {
    return static_cast<const SignerLookup*>(lookup)->find(signer, messageStore).detach();
}

}  // namespace Corvane::detail
