#include "core/check.h"
#include "core/log.h"
#include "crypto/message/crypto_api_provider.h"
#include "crypto/message/decoded_signatures.h"
#include "crypto/message/message_content.h"
#include "crypto/message/signer_info.h"

#include <algorithm>

namespace Corvane {
namespace {

// Data must be given for a detached message, and for no other.
void expectForm(const Bytes& message, bool isDetached) {
    const detail::Content content = detail::contentOf(message);
    if (content == detail::Content::unreadable)
        failCrypto(E_CRYPTO_MESSAGE_ADD_SIGNER, L"asn1::hasContent",
                   static_cast<DWORD>(CRYPT_E_UNEXPECTED_MSG_TYPE));
    if (isDetached == (content == detail::Content::inside))
        failCrypto(E_CRYPTO_MESSAGE_ADD_SIGNER, L"asn1::hasContent",
                   static_cast<DWORD>(CRYPT_E_INVALID_MSG_TYPE));
}

// Whatever step fails, it is the adding that does; the system's error tells the rest.
template <class Work>
auto asAdding(Work work) try {
    return work();
} catch (const CryptoException& exception) {
    if (exception.code() == E_CRYPTO_MESSAGE_ADD_CERT.code)
        throw;
    throw CryptoException(E_CRYPTO_MESSAGE_ADD_SIGNER, exception.error());
}

detail::CryptMessage decode(const Bytes& signature, const Bytes* data) {
    auto message = detail::CryptMessage::openToDecode(data ? CMSG_DETACHED_FLAG : 0);
    message.update(signature, true);
    if (data)
        message.update(*data, true);
    return message;
}

bool contains(const Certificates& certificates, const Certificate& wanted) {
    const Bytes hash = wanted.getHash();
    return std::ranges::any_of(certificates,
                               [&](const SharedCertificate& one) { return one->getHash() == hash; });
}

void addCertificates(detail::CryptMessage& message, const Certificates& added) {
    Certificates present = detail::certificatesIn(message);
    for (const SharedCertificate& certificate : added) {
        if (contains(present, *certificate))
            continue;
        const CRYPT_DATA_BLOB blob{certificate->context()->cbCertEncoded,
                                   certificate->context()->pbCertEncoded};
        message.control(CMSG_CTRL_ADD_CERT, &blob, E_CRYPTO_MESSAGE_ADD_CERT);
        present.push_back(certificate);
    }
}

// A message that would not verify is not handed out: data other than what was signed before, for instance.
// Signers whose certificates are elsewhere cannot be judged here.
void expectGoodSignatures(const Bytes& signature, const Bytes* data) {
    auto message = decode(signature, data);
    detail::DecodedSignatures signatures(message);
    const detail::SignerLookup lookup({});
    for (DWORD index = 0; index < signatures.count(); ++index) {
        const CertificateContext certificate = signatures.findCertificate(lookup, index);
        if (!certificate)
            continue;
        if (const DWORD error = signatures.verify(index, certificate.get()); error != ERROR_SUCCESS)
            failCrypto(E_CRYPTO_MESSAGE_ADD_SIGNER, L"CMSG_CTRL_VERIFY_SIGNATURE_EX", error);
    }
}

}  // namespace

Bytes CryptoApiProvider::addSignerToSignature(const Bytes& signature, const Bytes* data,
                                              const Certificate& certificate, bool addCertChain) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::addSignerToSignature", L"provider name: ",
             record_.name, L", signature: ", signature.size(), L" bytes, certificate: ", certificate,
             L", detached: ", data != nullptr);
    expectForm(signature, data != nullptr);
    const detail::IncludedCertificates included(certificate, addCertChain);
    const detail::PrivateKey key(certificate, E_CRYPTO_MESSAGE_ADD_SIGNER);
    detail::SignerInfo signer(record_, certificate, key);
    return asAdding([&] {
        Bytes result;
        {
            // Closed before the key.
            auto message = decode(signature, data);
            message.control(CMSG_CTRL_ADD_SIGNER, signer.get(), E_CRYPTO_MESSAGE_ADD_SIGNER);
            addCertificates(message, included.certificates());
            result = message.parameter(CMSG_ENCODED_MESSAGE);
        }
        expectGoodSignatures(result, data);
        return result;
    });
}

}  // namespace Corvane
