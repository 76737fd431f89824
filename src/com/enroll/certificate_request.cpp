#include "com/enroll/certificate_request.h"

#include "com/enroll/enroll4_certificate_request.h"
#include "com/enroll/x509_certificate_request.h"
#include "core/exception.h"
#include "core/log.h"
#include "core/windows_version.h"

namespace Corvane {

std::unique_ptr<ICertificateRequest> createCertificateRequest(unsigned majorVersion) {
    if (majorVersion >= 6)
        return std::make_unique<X509CertificateRequest>();
    if (majorVersion == 5)
        return std::make_unique<Enroll4CertificateRequest>();
    writeLog(LogLevel::error, L"Corvane::createCertificateRequest", L"major version: ", majorVersion);
    throw Exception(E_CENROLL_UNSUPORTED);
}

std::wstring getCertificateRenewalRequest(bool isPkcs7, const Certificate& certificate) {
    writeLog(LogLevel::debug, L"Corvane::getCertificateRenewalRequest", L"[in] is PKCS#7: ", isPkcs7,
             L" [in] certificate: ", certificate);
    const auto majorVersion = static_cast<unsigned>(std::stoul(windowsVersion()));
    return createCertificateRequest(majorVersion)->getRenewalRequest(isPkcs7, certificate);
}

}  // namespace Corvane
