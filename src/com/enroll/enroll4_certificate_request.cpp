#include "com/enroll/enroll4_certificate_request.h"

#include "binary/base64.h"
#include "com/enroll/late_object.h"
#include "core/log.h"
#include "core/two_pass.h"

#include <algorithm>
#include <span>
#include <string>

namespace Corvane {
namespace {

using Com::LateObject;

constexpr CLSID controlClass{0x43F8F289, 0x7A20, 0x11D0, {0x8F, 0x06, 0x00, 0xC0, 0x4F, 0xC2, 0x95, 0xE1}};
constexpr IID controlInterface{0xF8053FE5, 0x78F4, 0x448F, {0xA0, 0xDB, 0x41, 0xD6, 0x1B, 0x73, 0x44, 0x6B}};

// Forms of a request (XECR_PKCS10_V2_0 and XECR_PKCS7 of the platform's header).
constexpr long pkcs10Form = 1;
constexpr long pkcs7Form = 2;
constexpr long criticalExtension = 1;

// They say who issued the old certificate and where that one publishes: distribution points, authority
// information access, authority key identifier (RFC 5280).
constexpr std::string_view issuersExtensions[] = {"2.5.29.31", "1.3.6.1.5.5.7.1.1", "2.5.29.35"};

std::wstring base64(const BYTE* bytes, DWORD size) {
    return binToBase64({bytes, size}, base64NoLineBreaks);
}

// What `read` returns; its failure is told as `descriptor` with the same number of the system.
template <class Read>
auto telling(const ErrorDescriptor& descriptor, Read read) {
    try {
        return read();
    } catch (const CryptoException& exception) {
        throw CryptoException(descriptor, exception.error());
    }
}

bool isKeyOf(const CERT_CONTEXT& certificate, HCRYPTPROV provider, DWORD keySpec) {
    DWORD size = 0;
    if (!::CryptExportPublicKeyInfo(provider, keySpec, certificate.dwCertEncodingType, nullptr, &size))
        return false;
    Bytes exported(size);
    auto* info = reinterpret_cast<CERT_PUBLIC_KEY_INFO*>(exported.data());
    return ::CryptExportPublicKeyInfo(provider, keySpec, certificate.dwCertEncodingType, info, &size) &&
           ::CertComparePublicKeyInfo(certificate.dwCertEncodingType, info,
                                      &certificate.pCertInfo->SubjectPublicKeyInfo);
}

// AT_KEYEXCHANGE or AT_SIGNATURE, whichever of the container's keys is the certificate's.
DWORD findKeySpec(const CRYPT_KEY_PROV_INFO& place, const CERT_CONTEXT& certificate) {
    CryptProvider provider;
    checkCrypto(::CryptAcquireContextW(provider.put(), place.pwszContainerName, place.pwszProvName,
                                       place.dwProvType, place.dwFlags & CRYPT_MACHINE_KEYSET),
                E_ACQUIRE_CRYPTO_PROVIDER, L"CryptAcquireContext");
    for (const DWORD keySpec : {DWORD{AT_KEYEXCHANGE}, DWORD{AT_SIGNATURE}}) {
        if (isKeyOf(certificate, provider.get(), keySpec))
            return keySpec;
    }
    failCrypto(E_NO_MATCHING_KEY, L"CryptExportPublicKeyInfo", static_cast<DWORD>(NTE_NO_KEY));
}

void setKey(const LateObject& control, const Certificate& certificate) {
    const Bytes property =
        telling(E_NO_MATCHING_KEY, [&] { return certificate.getCertProperty(CERT_KEY_PROV_INFO_PROP_ID); });
    const auto& place = *reinterpret_cast<const CRYPT_KEY_PROV_INFO*>(property.data());
    const DWORD keySpec = findKeySpec(place, *certificate.context());
    control.put(E_PUT_PROVIDER_NAME, L"ProviderName", std::wstring_view(renewalProvider));
    control.put(E_PUT_PROVIDER_TYPE, L"ProviderType", renewalProviderType);
    control.put(E_PUT_CONTAINER_NAME, L"ContainerName",
                std::wstring_view(place.pwszContainerName ? place.pwszContainerName : L""));
    // The control would make a container of that name.
    control.put(E_PUT_CONTAINER_NAME, L"UseExistingKeySet", true);
    control.put(E_PUT_KEY_SPEC, L"KeySpec", static_cast<long>(keySpec));
}

void addExtensions(const LateObject& control, const CERT_INFO& certificate) {
    for (const CERT_EXTENSION& extension : std::span(certificate.rgExtension, certificate.cExtension)) {
        const std::string oid = extension.pszObjId ? extension.pszObjId : "";
        if (std::ranges::find(issuersExtensions, oid) != std::end(issuersExtensions))
            continue;
        control.call(E_CANT_ADD_CERTIFICATE_EXTENSION, L"addExtensionToRequest",
                     extension.fCritical ? criticalExtension : 0L,
                     std::wstring_view(std::wstring(oid.begin(), oid.end())),
                     std::wstring_view(base64(extension.Value.pbData, extension.Value.cbData)));
    }
}

}  // namespace

std::wstring Enroll4CertificateRequest::getRenewalRequest(bool isPkcs7,
                                                          const Certificate& certificate) const {
    writeLog(LogLevel::debug, L"Corvane::Enroll4CertificateRequest::getRenewalRequest", L"[in] is PKCS#7: ",
             isPkcs7, L" [in] certificate: ", certificate);
    const std::wstring subject =
        telling(E_WRONG_CERTIFICATE_CONTENT, [&] { return certificate.getSubject(CERT_X500_NAME_STR); });
    const LateObject control = LateObject::create(E_CO_CREATE_ENROLL, controlClass, controlInterface);
    setKey(control, certificate);
    const CERT_CONTEXT& context = *certificate.context();
    control.put(E_PUT_SIGNER_CERTIFICATE, L"SignerCertificate",
                std::wstring_view(base64(context.pbCertEncoded, context.cbCertEncoded)));
    addExtensions(control, *context.pCertInfo);
    return control.text(E_CREATE_REQUEST, L"createRequest", isPkcs7 ? pkcs7Form : pkcs10Form,
                        std::wstring_view(subject), std::wstring_view());
}

}  // namespace Corvane
