#include "com/enroll/x509_certificate_request.h"

#include "binary/base64.h"
#include "com/enroll/late_object.h"
#include "core/log.h"

namespace Corvane {
namespace {

using Com::LateObject;

constexpr GUID classOf(unsigned long first) {
    return {first, 0x217D, 0x11DA, {0xB2, 0xA4, 0x00, 0x0E, 0x7B, 0xBB, 0x2B, 0x09}};
}

constexpr CLSID pkcs10Class = classOf(0x884E2042);
constexpr IID pkcs10Interface = classOf(0x728AB342);
constexpr CLSID pkcs7Class = classOf(0x884E2044);
constexpr IID pkcs7Interface = classOf(0x728AB344);
constexpr CLSID signerClass = classOf(0x884E203D);
constexpr IID signerInterface = classOf(0x728AB33D);

// Values of the system's enumerations (certenroll.h).
constexpr long contextUser = 1;
constexpr long base64Encoding = 1;
constexpr long exchangeKey = 1;
constexpr long verifyNone = 0;
constexpr long newSimilarKey = 0x02;
constexpr long renewalCertificate = 0x20;
constexpr long subject = 0x80;
constexpr long extensions = 0x100;

LateObject createPkcs10(const std::wstring& certificate, long inherited) {
    LateObject request = LateObject::create(E_CO_CREATE_PKCS10, pkcs10Class, pkcs10Interface);
    request.call(E_INITIALIZE_PKCS10, L"InitializeFromCertificate", contextUser,
                 std::wstring_view(certificate), base64Encoding, inherited);
    const LateObject key = request.object(E_GET_PRIVATE_KEY, L"PrivateKey");
    key.put(E_PUT_PROVIDER_NAME, L"ProviderName", std::wstring_view(renewalProvider));
    // The name of a provider of this kind makes it a key for signatures, and the answer could not be
    // installed with that one.
    key.put(E_PUT_KEY_SPEC, L"KeySpec", exchangeKey);
    return request;
}

// The message that the old certificate signs. What is inside is encoded with it.
LateObject wrapInPkcs7(const LateObject& pkcs10, const std::wstring& certificate) {
    LateObject request = LateObject::create(E_CO_CREATE_PKCS7, pkcs7Class, pkcs7Interface);
    request.call(E_INITIALIZE_PKCS7, L"InitializeFromInnerRequest", pkcs10);
    const LateObject signer = LateObject::create(E_PUT_SIGNER_CERTIFICATE, signerClass, signerInterface);
    signer.call(E_PUT_SIGNER_CERTIFICATE, L"Initialize", false, verifyNone, base64Encoding,
                std::wstring_view(certificate));
    request.put(E_PUT_SIGNER_CERTIFICATE, L"SignerCertificate", signer);
    return request;
}

// Encoding makes the key.
std::wstring encode(const LateObject& request, const ErrorDescriptor& failure) {
    request.call(failure, L"Encode");
    return request.text(E_REQUEST_BLOB_TO_STRING, L"RawData", base64Encoding);
}

}  // namespace

std::wstring X509CertificateRequest::getRenewalRequest(bool isPkcs7, const Certificate& certificate) const {
    writeLog(LogLevel::debug, L"Corvane::X509CertificateRequest::getRenewalRequest", L"[in] is PKCS#7: ",
             isPkcs7, L" [in] certificate: ", certificate);
    const std::wstring content = binToBase64(certificate.getContent(), base64NoLineBreaks);
    const LateObject pkcs10 =
        createPkcs10(content, newSimilarKey | subject | extensions | (isPkcs7 ? renewalCertificate : 0));
    if (!isPkcs7)
        return encode(pkcs10, E_ENCODE_CERTIFICATE_REQUEST_PKCS10);
    return encode(wrapInPkcs7(pkcs10, content), E_ENCODE_CERTIFICATE_REQUEST_PKCS7);
}

}  // namespace Corvane
