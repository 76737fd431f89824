// What a handle of CryptMsgOpenToEncode or CryptMsgOpenToDecode stands for.
#pragma once

#include "crypto.h"

#include <memory>
#include <vector>

namespace Corvane::Platform::Messages {

namespace Oid {
constexpr char data[] = "1.2.840.113549.1.7.1", signedData[] = "1.2.840.113549.1.7.2",
               envelopedData[] = "1.2.840.113549.1.7.3", contentType[] = "1.2.840.113549.1.9.3",
               messageDigest[] = "1.2.840.113549.1.9.4", keyIdentifierName[] = "1.3.6.1.4.1.311.10.7.1";
}  // namespace Oid

class Message {
public:
    explicit Message(const CMSG_STREAM_INFO* stream) : stream_(stream ? *stream : CMSG_STREAM_INFO{}) {}
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;
    virtual ~Message() = default;

    virtual void update(View bytes, bool isFinal) = 0;
    // A structure points into the message.
    virtual Bytes parameter(DWORD type, DWORD index) = 0;
    virtual void control(DWORD, const void*) {}

    int references = 1;

protected:
    bool isStream() const { return stream_.pfnStreamOutput != nullptr; }
    // To the caller's function, or into memory. Fails with the code that the function leaves when it refuses.
    void put(View bytes) {
        if (!isStream())
            append(collected_, bytes);
        else if (!bytes.empty())
            must(stream_.pfnStreamOutput(stream_.pvArg, const_cast<BYTE*>(bytes.data()), lengthOf(bytes),
                                         FALSE));
    }

    Bytes collected_;

private:
    CMSG_STREAM_INFO stream_;
};

using OwnedMessage = std::unique_ptr<Message>;

OwnedMessage encodeSigned(DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream);
OwnedMessage encodeEnveloped(const CMSG_ENVELOPED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream);
OwnedMessage decode(const CMSG_STREAM_INFO* stream);

// The shape that signed and enveloped messages share: a head, content in one octet string, and an end. In a
// stream the outer elements are of indefinite length, and the content comes in pieces.
struct Layout {
    Bytes type;               // of the message
    Bytes head;               // what stands before the inner element with the content
    Bytes innerHead;          // what stands before the content in it
    bool isImplicit = false;  // the content has the tag [0] itself
    bool hasContent = true;   // else there is not even an empty one

    Bytes whole(View content, View after) const;
    Bytes start() const;
    Bytes piece(View content) const;
    Bytes end(View after) const;
};

// SignedData (RFC 5652, 5.1), apart from its content.
struct SignedParts {
    std::vector<std::string> digests;
    std::string contentType = Oid::data;
    std::vector<Bytes> certificates, signers;

    void addDigest(const std::string& hash);
    Layout layout(bool hasContent) const;
    // What follows the content.
    Bytes after() const;
};
// SignerInfo, without attributes, for content of that digest.
Bytes signerInfo(const CMSG_SIGNER_ENCODE_INFO& signer, const Bytes& digest);

}  // namespace Corvane::Platform::Messages
