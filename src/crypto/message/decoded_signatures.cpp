#include "crypto/message/decoded_signatures.h"

#include "core/log.h"
#include "crypto/api/encoding.h"

#include <memory>
#include <utility>

namespace Corvane::detail {
namespace {

CertificateStoreHandle storeOf(const CryptMessage& message, const ErrorDescriptor& descriptor) {
    return CertificateStoreHandle(
        checkCrypto(::CertOpenStore(CERT_STORE_PROV_MSG, messageEncoding, 0, 0, message.get()), descriptor,
                    L"CertOpenStore"));
}

}  // namespace

DecodedSignatures::DecodedSignatures(CryptMessage& message) : message_(message) {
    if (message.number(CMSG_TYPE_PARAM) != CMSG_SIGNED)
        failCrypto(E_CRYPTO_VERIFY, L"CryptMsgGetParam", static_cast<DWORD>(CRYPT_E_UNEXPECTED_MSG_TYPE));
    count_ = message.number(CMSG_SIGNER_COUNT_PARAM);
    writeLog(LogLevel::debug, L"Corvane::detail::DecodedSignatures", L"signers count: ", count_);
    if (count_ > signerLimit)
        failCrypto(E_CRYPTO_VERIFY, L"CMSG_SIGNER_COUNT_PARAM", ERROR_INVALID_DATA);
    store_ = storeOf(message, E_CERT_STORE_OPEN);
    writeLog(LogLevel::debug, L"Corvane::detail::DecodedSignatures", L"certificates count: ",
             message.number(CMSG_CERT_COUNT_PARAM));
}

Bytes DecodedSignatures::signerInfo(DWORD index) const {
    return message_.parameter(CMSG_SIGNER_CERT_INFO_PARAM, index);
}

CertificateContext DecodedSignatures::findCertificate(const SignerLookup& lookup, DWORD index) const {
    Bytes signer = signerInfo(index);
    return lookup.find(reinterpret_cast<CERT_INFO*>(signer.data()), store_.get());
}

DWORD DecodedSignatures::verify(DWORD index, PCCERT_CONTEXT certificate) {
    CMSG_CTRL_VERIFY_SIGNATURE_EX_PARA how{};
    how.cbSize = sizeof(how);
    how.dwSignerIndex = index;
    how.dwSignerType = CMSG_VERIFY_SIGNER_CERT;
    how.pvSigner = const_cast<CERT_CONTEXT*>(certificate);
    return message_.tryControl(CMSG_CTRL_VERIFY_SIGNATURE_EX, &how);
}

Certificates DecodedSignatures::verifyAll(const SignerLookup& lookup) {
    Certificates signers;
    for (DWORD index = 0; index < count_; ++index) {
        CertificateContext certificate = findCertificate(lookup, index);
        if (!certificate)
            failCrypto(E_CRYPTO_VERIFY, L"CertGetSubjectCertificateFromStore", ::GetLastError());
        if (const DWORD error = verify(index, certificate.get()); error != ERROR_SUCCESS)
            failCrypto(E_CRYPTO_VERIFY, L"CryptMsgControl", error);
        signers.push_back(std::make_shared<Certificate>(std::move(certificate)));
    }
    return signers;
}

Certificates certificatesIn(const CryptMessage& message) {
    const CertificateStoreHandle store = storeOf(message, E_CRYPTO_EXTRACT_CERT);
    Certificates certificates;
    CertificateContext context;
    const auto next = [&] {
        // The call frees the context it goes on from.
        context.attach(::CertEnumCertificatesInStore(store.get(), context.detach()));
        return static_cast<bool>(context);
    };
    while (next())
        certificates.push_back(std::make_shared<Certificate>(Certificate::duplicate(context.get())));
    const DWORD error = ::GetLastError();
    if (error != static_cast<DWORD>(CRYPT_E_NOT_FOUND) && error != ERROR_NO_MORE_FILES)
        failCrypto(E_CRYPTO_EXTRACT_CERT, L"CertEnumCertificatesInStore", error);
    return certificates;
}

}  // namespace Corvane::detail
