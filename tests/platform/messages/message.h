// What a handle of CryptMsgOpenToEncode or CryptMsgOpenToDecode stands for.
#pragma once

#include "answer.h"

#include <memory>

namespace Corvane::Platform::Messages {

namespace Oid {
constexpr char data[] = "1.2.840.113549.1.7.1", signedData[] = "1.2.840.113549.1.7.2",
               envelopedData[] = "1.2.840.113549.1.7.3", contentType[] = "1.2.840.113549.1.9.3",
               messageDigest[] = "1.2.840.113549.1.9.4", rsa[] = "1.2.840.113549.1.1.1",
               keyIdentifierName[] = "1.3.6.1.4.1.311.10.7.1";
}  // namespace Oid

// A parameter of our own: whether a signed message has content in it, as a DWORD.
constexpr DWORD hasContentParam = 0x7F000001;

// Where a message's output goes: to the caller's function as it comes, or into memory.
class Sink {
public:
    explicit Sink(const CMSG_STREAM_INFO* stream) : stream_(stream ? *stream : CMSG_STREAM_INFO{}) {}

    bool isStream() const { return stream_.pfnStreamOutput != nullptr; }
    DWORD announced() const { return stream_.cbContent; }
    const Bytes& collected() const { return collected_; }

    // Fails with the code that the caller's function leaves when it refuses.
    void put(View bytes, bool isFinal = false) {
        if (!isStream())
            append(collected_, bytes);
        else if (!bytes.empty() || isFinal)
            must(stream_.pfnStreamOutput(stream_.pvArg, const_cast<BYTE*>(bytes.data()), sizeOf(bytes),
                                         isFinal));
    }
    // The whole of a message that was made.
    void give(DWORD type, Answer& answer) const {
        if (type != CMSG_CONTENT_PARAM)
            fail(CRYPT_E_INVALID_MSG_TYPE);
        if (collected_.empty())
            fail(CRYPT_E_MSG_ERROR);
        answer.give(collected_);
    }

private:
    CMSG_STREAM_INFO stream_;
    Bytes collected_;
};

class Message {
public:
    Message() = default;
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;
    virtual ~Message() = default;

    // A failed update spoils the message: later ones fail with CRYPT_E_MSG_ERROR.
    void apply(View bytes, bool isFinal) {
        if (std::exchange(isSpoiled_, true))
            fail(CRYPT_E_MSG_ERROR);
        try {
            update(bytes, isFinal);
        } catch (const Truncated&) {
            if (isStream)
                fail(CRYPT_E_STREAM_INSUFFICIENT_DATA);
            throw;
        }
        isSpoiled_ = false;
    }
    // For apply. One after the end fails with CRYPT_E_MSG_ERROR.
    virtual void update(View bytes, bool isFinal) = 0;
    virtual void parameter(DWORD type, DWORD index, Answer answer) = 0;
    // Messages that are encoded take no control.
    virtual void control(DWORD, DWORD, const void*) { fail(E_INVALIDARG); }

    bool isStream = false;

private:
    bool isSpoiled_ = false;
};

using OwnedMessage = std::unique_ptr<Message>;

OwnedMessage encodeSigned(DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream);
// How long the message will be, which asks for no signature.
std::uint64_t signedSize(DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info, DWORD contentSize);
OwnedMessage encodeEnveloped(const CMSG_ENVELOPED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream);
OwnedMessage decodeSigned(bool isDetached, const CMSG_STREAM_INFO* stream);
OwnedMessage decodeEnveloped(const CMSG_STREAM_INFO* stream);

}  // namespace Corvane::Platform::Messages
