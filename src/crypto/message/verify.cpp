#include "asn1/decoders/signed_data.h"
#include "binary/hex.h"
#include "core/check.h"
#include "core/log.h"
#include "crypto/api/blob.h"
#include "crypto/api/encoding.h"
#include "crypto/api/message_size.h"
#include "crypto/message/crypto_api_provider.h"

#include <algorithm>
#include <utility>

namespace Corvane {
namespace {

void logSigner(const CERT_INFO& signer) noexcept try {
    writeLog(LogLevel::debug, L"getSignerCertificateCallback", L"serialNumber: ",
             binToHex(detail::toBigEndian(signer.SerialNumber)), L"| issuer: ",
             detail::toText(signer.Issuer, CERT_X500_NAME_STR));
} catch (...) {
    // The search for the signer does not depend on the log.
}

// Called by the system: nothing may be thrown. `argument` is the store of the supplied certificates.
PCCERT_CONTEXT WINAPI getSignerCertificateCallback(void* argument, DWORD, PCERT_INFO signer,
                                                   HCERTSTORE messageStore) {
    if (!signer) {
        ::SetLastError(static_cast<DWORD>(CRYPT_E_NOT_FOUND));
        return nullptr;
    }
    if (isLogEnabled(LogLevel::debug))
        logSigner(*signer);
    if (PCCERT_CONTEXT supplied = ::CertGetSubjectCertificateFromStore(argument, messageEncoding, signer))
        return supplied;
    return ::CertGetSubjectCertificateFromStore(messageStore, messageEncoding, signer);
}

// In a store the system finds certificates by every way in which a message may name its signers.
CertificateStoreHandle collect(const Certificates& certificates) {
    CertificateStoreHandle store(checkCrypto(::CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr),
                                             E_CERT_STORE_OPEN, L"CertOpenStore"));
    for (const SharedCertificate& certificate : certificates) {
        checkCrypto(::CertAddCertificateContextToStore(store.get(), certificate->context(),
                                                       CERT_STORE_ADD_USE_EXISTING, nullptr),
                    E_CERT_STORE_INSTALL, L"CertAddCertificateContextToStore");
    }
    return store;
}

// One message, and what the system is asked about each of its signers.
class SignedMessage {
public:
    SignedMessage(const Bytes& signature, const Bytes* data, HCERTSTORE supplied)
        : signature_(signature),
          size_(detail::messageSize(signature)),
          data_(data),
          dataSize_(data ? detail::messageSize(*data) : 0) {
        parameters_.cbSize = sizeof(parameters_);
        parameters_.dwMsgAndCertEncodingType = messageEncoding;
        parameters_.pfnGetSignerCertificate = getSignerCertificateCallback;
        parameters_.pvGetArg = supplied;
    }

    // The certificate of a signer whose signature is good; else empty, and `error` says why: 0 where the
    // system gave no reason.
    CertificateContext verify(DWORD index, DWORD& error) {
        CertificateContext signer;
        ::SetLastError(ERROR_SUCCESS);
        const bool good = data_ ? verifyDetached(index, signer) : verifyAttached(index, signer);
        error = ::GetLastError();
        if (!good)
            return {};
        if (!signer)
            error = static_cast<DWORD>(CRYPT_E_NOT_FOUND);
        else if (!data_ && !hasContent())
            error = static_cast<DWORD>(CRYPT_E_INVALID_MSG_TYPE);
        else
            return signer;
        return {};
    }

    // How many signers there can be: as many as the message says or, where that cannot be read, fewer than it
    // has bytes.
    DWORD signerBound() const noexcept {
        const LONG count = ::CryptGetMessageSignerCount(messageEncoding, signature_.data(), size_);
        return count < 0 ? std::max<DWORD>(size_, 1) : static_cast<DWORD>(count);
    }

private:
    bool verifyDetached(DWORD index, CertificateContext& signer) {
        const BYTE* blocks[] = {data_->data()};
        DWORD sizes[] = {dataSize_};
        return ::CryptVerifyDetachedMessageSignature(&parameters_, index, signature_.data(), size_, 1, blocks,
                                                     sizes, signer.put()) != FALSE;
    }

    bool verifyAttached(DWORD index, CertificateContext& signer) {
        // The system wants the size of the content told even where nobody asks for it.
        DWORD decoded = 0;
        return ::CryptVerifyMessageSignature(&parameters_, index, signature_.data(), size_, nullptr, &decoded,
                                             signer.put()) != FALSE;
    }

    // The system says of a detached message without its data that all is well, though it has verified
    // nothing.
    bool hasContent() const try {
        return asn1::hasContent(signature_);
    } catch (const asn1::Asn1Exception& exception) {
        writeLog(LogLevel::error, L"asn1::hasContent", exception.what());
        return false;
    }

    CRYPT_VERIFY_MESSAGE_PARA parameters_{};
    const Bytes& signature_;
    DWORD size_;
    const Bytes* data_;
    DWORD dataSize_;
};

}  // namespace

Certificates CryptoApiProvider::verifyMessageSignature(const Bytes& signature, const Bytes* data,
                                                       const Certificates& supplied) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::verifyMessageSignature", L"provider name: ",
             record_.name, L", signature: ", signature.size(), L" bytes, input certificate: ", supplied);
    const CertificateStoreHandle suppliedStore = collect(supplied);
    SignedMessage message(signature, data, suppliedStore.get());
    Certificates signers;
    const DWORD bound = message.signerBound();
    for (DWORD index = 0; index < bound; ++index) {
        DWORD error = ERROR_SUCCESS;
        if (CertificateContext signer = message.verify(index, error)) {
            signers.push_back(std::make_shared<Certificate>(std::move(signer)));
            continue;
        }
        if (error == static_cast<DWORD>(CRYPT_E_NO_SIGNER))
            break;
        // A failure without a code is passed over: that leniency is wanted.
        if (error == ERROR_SUCCESS)
            continue;
        failCrypto(E_CRYPTO_VERIFY,
                   data ? L"CryptVerifyDetachedMessageSignature" : L"CryptVerifyMessageSignature", error);
    }
    return signers;
}

}  // namespace Corvane
