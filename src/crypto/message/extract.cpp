#include "core/check.h"
#include "core/log.h"
#include "crypto/message/crypto_api_provider.h"
#include "crypto/message/decoded_signatures.h"
#include "crypto/message/message_content.h"
#include "crypto/message/message_feed.h"
#include "stream/output_range.h"

namespace Corvane {
namespace {

// Of a detached message the system gives empty content rather than none.
void expectContent(std::span<const std::uint8_t> message) {
    if (detail::contentOf(message) != detail::Content::inside)
        failCrypto(E_CRYPTO_EXTRACT_CONTENT, L"asn1::hasContent",
                   static_cast<DWORD>(CRYPT_E_INVALID_MSG_TYPE));
}

void expectSigned(const detail::CryptMessage& message, const ErrorDescriptor& descriptor) {
    if (message.number(CMSG_TYPE_PARAM) != CMSG_SIGNED)
        failCrypto(descriptor, L"CryptMsgGetParam", static_cast<DWORD>(CRYPT_E_UNEXPECTED_MSG_TYPE));
}

}  // namespace

Certificates CryptoApiProvider::getCertificatesFromSignature(const Bytes& signature) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::getCertificatesFromSignature", L"signature: ",
             signature.size(), L" bytes");
    auto message = detail::CryptMessage::openToDecode(0);
    message.update(signature, true);
    expectSigned(message, E_CRYPTO_EXTRACT_CERT);
    return detail::certificatesIn(message);
}

Bytes CryptoApiProvider::getContentFromSignature(const Bytes& signature) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::getContentFromSignature", L"signature: ",
             signature.size(), L" bytes");
    expectContent(signature);
    Bytes content;
    auto message = detail::CryptMessage::openToDecode(0, [&content](std::span<const std::uint8_t> piece) {
        content.insert(content.end(), piece.begin(), piece.end());
    });
    message.update(signature, true);
    return content;
}

Certificates CryptoApiProvider::extractCertificatesFromSignature(Stream::IBinaryStream& input,
                                                                 const SharedProgress& progress) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::extractCertificatesFromSignature",
             L"input size: ", input.state().size, L", input position: ", input.state().position);
    auto message = detail::CryptMessage::openToDecode(0, [](auto) {});
    detail::feed(message, input, progress);
    expectSigned(message, E_CRYPTO_EXTRACT_CERT);
    return detail::certificatesIn(message);
}

void CryptoApiProvider::extractContentFromSignature(Stream::IBinaryStream& input,
                                                    Stream::IBinaryStream& output,
                                                    const SharedProgress& progress) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::extractContentFromSignature", L"input size: ",
             input.state().size, L", input position: ", input.state().position);
    Stream::expectSeparate(input, output, E_CRYPTO_EXTRACT_CONTENT);
    Stream::OutputRange range(output);
    auto message = detail::CryptMessage::openToDecode(0, range.sink());
    detail::feed(message, input, progress, expectContent);
    range.commit();
}

}  // namespace Corvane
