#include "core/lock.h"
#include "core/log.h"
#include "core/two_pass.h"
#include "core/wide_text.h"
#include "crypto/api/encoding.h"
#include "crypto/api/message_size.h"
#include "crypto/message/crypto_api_provider.h"
#include "crypto/message/message_feed.h"
#include "crypto/message/signer_info.h"
#include "stream/output_range.h"

#include <mutex>
#include <shared_mutex>

namespace Corvane {
namespace {

// Shared by the signings under way: several of them may use one certificate's key at once.
SharedMutex signing;

// A token that was pulled out takes the open key with it. The next signature begins with a new one, rather
// than with one that fails as long as the certificate is kept. While others sign, their key is not freed
// beneath them; whoever fails as the last does it.
void forgetKey(const Certificate& certificate) noexcept {
    const std::unique_lock alone(signing, std::try_to_lock);
    if (alone)
        ::CertSetCertificateContextProperty(certificate.context(), CERT_KEY_CONTEXT_PROP_ID, 0, nullptr);
}

}  // namespace

Bytes CryptoApiProvider::sign(const Bytes& data, const Certificate& certificate, bool attached,
                              bool addCertChain) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::sign", L"provider name: ", record_.name,
             L"certificate: ", certificate, L", attached: ", attached);
    const detail::IncludedCertificates included(certificate, addCertChain);
    std::vector<PCCERT_CONTEXT> contexts = included.contexts();
    std::string hash = toUtf8(record_.hash);

    CRYPT_SIGN_MESSAGE_PARA parameters{};
    parameters.cbSize = sizeof(parameters);
    parameters.dwMsgEncodingType = messageEncoding;
    parameters.pSigningCert = certificate.context();
    parameters.HashAlgorithm.pszObjId = hash.data();
    parameters.cMsgCert = static_cast<DWORD>(contexts.size());
    parameters.rgpMsgCert = contexts.data();

    const BYTE* blocks[] = {data.data()};
    DWORD sizes[] = {detail::messageSize(data)};
    try {
        const std::shared_lock underWay(signing);
        // The message is made in two calls, and a token may ask for its PIN in each; this key stays with the
        // context for both. Where it fails, signing has failed: going on would ask once more for a card that
        // the user does not have.
        const detail::PrivateKey key(certificate, E_CRYPTO_SIGN, detail::PrivateKey::Kind::kept);
        return twoPass<BYTE>(E_CRYPTO_SIGN, L"CryptSignMessage", [&](BYTE* buffer, DWORD* size) {
            return ::CryptSignMessage(&parameters, !attached, 1, blocks, sizes, buffer, size);
        });
    } catch (const CryptoException&) {
        forgetKey(certificate);
        throw;
    }
}

void CryptoApiProvider::sign(Stream::IBinaryStream& input, Stream::IBinaryStream& output,
                             const Certificate& certificate, bool attached, bool addCertChain,
                             const SharedProgress& progress) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::sign", L"provider name: ", record_.name,
             L"certificate: ", certificate, L", attached: ", attached, L", input size: ", input.state().size,
             L", input position: ", input.state().position);
    Stream::expectSeparate(input, output, E_CRYPTO_SIGN);
    const detail::IncludedCertificates included(certificate, addCertChain);
    std::vector<CRYPT_DATA_BLOB> blobs = included.blobs();
    const detail::PrivateKey key(certificate, E_CRYPTO_SIGN);
    detail::SignerInfo signer(record_, certificate, key);

    CMSG_SIGNED_ENCODE_INFO info{};
    info.cbSize = sizeof(info);
    info.cSigners = 1;
    info.rgSigners = signer.get();
    info.cCertEncoded = static_cast<DWORD>(blobs.size());
    info.rgCertEncoded = blobs.data();

    // Only for what lies behind the message: what was written stays when signing fails, so it is not told of
    // that.
    Stream::OutputRange range(output);
    detail::MessageContent content(input);
    auto message = detail::CryptMessage::openToEncode(
        attached ? 0 : CMSG_DETACHED_FLAG, CMSG_SIGNED, &info, content.announcedSize(),
        [&output](std::span<const std::uint8_t> piece) { output.write(piece); });
    content.feed(message, progress);
    range.commit();
}

}  // namespace Corvane
