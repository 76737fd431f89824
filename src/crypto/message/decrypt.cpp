#include "core/check.h"
#include "core/log.h"
#include "crypto/message/crypto_api_provider.h"
#include "crypto/message/message_feed.h"
#include "crypto/message/recipients.h"
#include "stream/output_range.h"

#include <utility>

namespace Corvane {
namespace {

// What stands before the content: recipients and the algorithm. The system keeps all that came until then.
constexpr std::uint64_t largestHeader = std::uint64_t{64} << 20;

// Decrypts a message that comes in pieces. Its content goes to the output from the moment on at which its
// recipients are known.
class EnvelopedMessage {
public:
    explicit EnvelopedMessage(detail::CryptMessage::Output output, SharedProgress progress = {})
        : message_(detail::CryptMessage::openToDecode(0, std::move(output))),
          progress_(std::move(progress)) {}

    void update(std::span<const std::uint8_t> bytes, bool last) {
        feed(bytes, last);
        size_ += bytes.size();
        if (key_)
            return;
        if (isHeaderRead(last))
            key_ = detail::decryptMessage(message_, progress_);
        else if (size_ > largestHeader)
            failCrypto(E_CRYPTO_DECRYPT, L"CMSG_ENVELOPE_ALGORITHM_PARAM", ERROR_INVALID_DATA);
    }

private:
    // With the key at hand this is where the content is decrypted. What a provider refuses (NTE_...) fails
    // the decryption, all else is about the message's form.
    void feed(std::span<const std::uint8_t> bytes, bool last) try {
        message_.update(bytes, last);
    } catch (const CryptoException& exception) {
        constexpr DWORD family = 0xFFFFF000;
        if (!key_ || (exception.error() & family) != (static_cast<DWORD>(NTE_BAD_UID) & family))
            throw;
        throw CryptoException(E_CRYPTO_DECRYPT, exception.error());
    }

    bool isHeaderRead(bool last) {
        DWORD error = ERROR_SUCCESS;
        if (!message_.has(CMSG_ENVELOPE_ALGORITHM_PARAM, 0, error)) {
            if (!last && error == static_cast<DWORD>(CRYPT_E_STREAM_MSG_NOT_READY))
                return false;
            failCrypto(E_CRYPTO_DECRYPT, L"CryptMsgGetParam", error);
        }
        return true;
    }

    std::unique_ptr<detail::PrivateKey> key_;  // outlives the message
    detail::CryptMessage message_;
    SharedProgress progress_;
    std::uint64_t size_ = 0;
};

}  // namespace

Bytes CryptoApiProvider::decrypt(const Bytes& message) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::decrypt", L"message size: ", message.size());
    Bytes content;
    EnvelopedMessage enveloped([&content](std::span<const std::uint8_t> piece) {
        content.insert(content.end(), piece.begin(), piece.end());
    });
    enveloped.update(message, true);
    return content;
}

void CryptoApiProvider::decrypt(Stream::IBinaryStream& input, Stream::IBinaryStream& output,
                                const SharedProgress& progress) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::decrypt", L"input size: ", input.state().size,
             L", input position: ", input.state().position);
    Stream::expectSeparate(input, output, E_CRYPTO_DECRYPT);
    Stream::OutputRange range(output);
    EnvelopedMessage message(range.sink(), progress);
    Stream::forEachBlock(
        input, detail::messageBlockSize, progress,
        [&](std::span<const std::uint8_t> block, bool last) { message.update(block, last); });
    range.commit();
}

}  // namespace Corvane
