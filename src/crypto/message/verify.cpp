#include "core/check.h"
#include "core/log.h"
#include "crypto/api/encoding.h"
#include "crypto/api/message_size.h"
#include "crypto/message/crypto_api_provider.h"
#include "crypto/message/decoded_signatures.h"
#include "crypto/message/message_content.h"
#include "crypto/message/message_feed.h"

#include <algorithm>
#include <utility>

namespace Corvane {
namespace {

// Up to here each signer is asked for by its number, where the system decodes the message and computes the
// digest of the data anew; messages with more signers are decoded once.
constexpr DWORD fewSigners = 16;

// Whether a message is of the form that the caller says. Of a detached message without its data the system
// says that all is well, though it has verified nothing; and one that holds its content may be good for that
// content, which says nothing about the data beside it. Of what only the system can read nobody knows.
bool isOfForm(std::span<const std::uint8_t> message, bool isDetached) {
    return detail::contentOf(message) == (isDetached ? detail::Content::detached : detail::Content::inside);
}

[[noreturn]] void refuseForm() {
    failCrypto(E_CRYPTO_VERIFY, L"contentOf", static_cast<DWORD>(CRYPT_E_INVALID_MSG_TYPE));
}

// Gives the signature to the message. What is wrong with one that cannot be read, the system says best.
void takeSignature(detail::CryptMessage& message, const Bytes& signature, bool isDetached) {
    const bool isGood = isOfForm(signature, isDetached);
    if (isGood || detail::contentOf(signature) == detail::Content::unreadable)
        message.update(signature, true);
    if (!isGood)
        refuseForm();
}

// One message, and what the system is asked about each of its signers.
class SignedMessage {
public:
    SignedMessage(const Bytes& signature, const Bytes* data, const detail::SignerLookup& lookup)
        : signature_(signature),
          size_(detail::messageSize(signature)),
          data_(data),
          dataSize_(data ? detail::messageSize(*data) : 0) {
        parameters_.cbSize = sizeof(parameters_);
        parameters_.dwMsgAndCertEncodingType = messageEncoding;
        parameters_.pfnGetSignerCertificate = detail::SignerLookup::getSignerCertificateCallback;
        parameters_.pvGetArg = const_cast<detail::SignerLookup*>(&lookup);
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
        else if (!isOfForm(signature_, data_ != nullptr))
            error = static_cast<DWORD>(CRYPT_E_INVALID_MSG_TYPE);
        else
            return signer;
        return {};
    }

    // As many as the message says or, where that cannot be read, as few as are judged this way.
    DWORD signerCount() const noexcept {
        const LONG count = ::CryptGetMessageSignerCount(messageEncoding, signature_.data(), size_);
        return count < 0 ? fewSigners : static_cast<DWORD>(count);
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

    CRYPT_VERIFY_MESSAGE_PARA parameters_{};
    const Bytes& signature_;
    DWORD size_;
    const Bytes* data_;
    DWORD dataSize_;
};

Certificates verifyEach(SignedMessage& message, DWORD count, bool isDetached) {
    Certificates signers;
    for (DWORD index = 0; index < count; ++index) {
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
                   isDetached ? L"CryptVerifyDetachedMessageSignature" : L"CryptVerifyMessageSignature",
                   error);
    }
    return signers;
}

Certificates verifyDecoded(const Bytes& signature, const Bytes* data, const detail::SignerLookup& lookup) {
    auto message = detail::CryptMessage::openToDecode(data ? CMSG_DETACHED_FLAG : 0);
    takeSignature(message, signature, data != nullptr);
    if (data)
        message.update(*data, true);
    return detail::DecodedSignatures(message).verifyAll(lookup);
}

}  // namespace

Certificates CryptoApiProvider::verifyMessageSignature(const Bytes& signature, const Bytes* data,
                                                       const Certificates& supplied) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::verifyMessageSignature", L"provider name: ",
             record_.name, L", signature: ", signature.size(), L" bytes, input certificate: ", supplied);
    const detail::SignerLookup lookup(supplied);
    SignedMessage message(signature, data, lookup);
    const DWORD count = message.signerCount();
    return count > fewSigners ? verifyDecoded(signature, data, lookup)
                              : verifyEach(message, count, data != nullptr);
}

Certificates CryptoApiProvider::verifyMessageSignature(const Bytes& signature, Stream::IBinaryStream& data,
                                                       const Certificates& supplied,
                                                       const SharedProgress& progress) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::verifyMessageSignature", L"provider name: ",
             record_.name, L", signature: ", signature.size(), L" bytes, input certificate: ", supplied,
             L", data size: ", data.state().size, L", data position: ", data.state().position);
    const detail::SignerLookup lookup(supplied);
    auto message = detail::CryptMessage::openToDecode(CMSG_DETACHED_FLAG, [](auto) {});
    takeSignature(message, signature, true);
    detail::feed(message, data, progress);
    return detail::DecodedSignatures(message).verifyAll(lookup);
}

Certificates CryptoApiProvider::verifyMessageSignature(Stream::IBinaryStream& signature,
                                                       const Certificates& supplied,
                                                       const SharedProgress& progress) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::verifyMessageSignature", L"provider name: ",
             record_.name, L", input certificate: ", supplied, L", signature size: ", signature.state().size,
             L", data position: ", signature.state().position);
    const detail::SignerLookup lookup(supplied);
    auto message = detail::CryptMessage::openToDecode(0, [](auto) {});
    detail::feed(message, signature, progress, [](auto block) {
        if (!isOfForm(block, false))
            refuseForm();
    });
    return detail::DecodedSignatures(message).verifyAll(lookup);
}

}  // namespace Corvane
