#include "asn1/decoders/signed_data.h"
#include "core/check.h"
#include "core/log.h"
#include "crypto/api/message_size.h"
#include "crypto/message/crypto_api_provider.h"
#include "crypto/message/decoded_signatures.h"
#include "crypto/message/message_feed.h"
#include "stream/output_range.h"

#include <utility>

namespace Corvane {
namespace {

// Of a detached message the system gives empty content rather than none.
void expectContent(std::span<const std::uint8_t> message) {
    bool hasContent = false;
    try {
        hasContent = asn1::hasContent(message);
    } catch (const asn1::Asn1Exception& exception) {
        writeLog(LogLevel::error, L"asn1::hasContent", exception.what());
    }
    if (!hasContent)
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
    detail::messageSize(signature);
    auto message = detail::CryptMessage::openToDecode(0);
    message.update(signature, true);
    expectSigned(message, E_CRYPTO_EXTRACT_CERT);
    return detail::certificatesIn(message);
}

Bytes CryptoApiProvider::getContentFromSignature(const Bytes& signature) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::getContentFromSignature", L"signature: ",
             signature.size(), L" bytes");
    detail::messageSize(signature);
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
    Stream::forEachBlock(
        input, detail::messageBlockSize, progress,
        [&](std::span<const std::uint8_t> block, bool last) { message.update(block, last); });
    expectSigned(message, E_CRYPTO_EXTRACT_CERT);
    return detail::certificatesIn(message);
}

void CryptoApiProvider::extractContentFromSignature(Stream::IBinaryStream& input,
                                                    Stream::IBinaryStream& output,
                                                    const SharedProgress& progress) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::extractContentFromSignature", L"input size: ",
             input.state().size, L", input position: ", input.state().position);
    Stream::OutputRange range(output);
    auto message = detail::CryptMessage::openToDecode(0, range.sink());
    bool isFirst = true;
    Stream::forEachBlock(input, detail::messageBlockSize, progress,
                         [&](std::span<const std::uint8_t> block, bool last) {
                             if (std::exchange(isFirst, false))
                                 expectContent(block);
                             message.update(block, last);
                         });
    range.commit();
}

}  // namespace Corvane
