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

constexpr std::uint8_t indefinite = 0x80;
constexpr std::size_t endMarkerSize = 2;

// The shape that signed and enveloped messages share: a head, content in one octet string, and an end. In a
// stream the outer elements are of indefinite length, and the content comes in pieces.
struct Layout {
    Bytes type;               // of the message
    Bytes head;               // what stands before the inner element with the content
    Bytes innerHead;          // what stands before the content in it
    bool isImplicit = false;  // the content has the tag [0] itself
    bool hasContent = true;   // else there is not even an empty one

    Bytes whole(View content, View after) const {
        const Bytes string = !hasContent  ? Bytes()
                             : isImplicit ? tlv(Tag::contextPrimitive(0), content)
                                          : tlv(Tag::context(0), tlv(Tag::octetString, content));
        const Bytes body = tlv(Tag::sequence, head, tlv(Tag::sequence, innerHead, string), after);
        return tlv(Tag::sequence, type, tlv(Tag::context(0), body));
    }

    Bytes start() const {
        Bytes start{Tag::sequence, indefinite};
        append(start, type);
        append(start, Bytes{Tag::context(0), indefinite, Tag::sequence, indefinite});
        append(start, head);
        append(start, Bytes{Tag::sequence, indefinite});
        append(start, innerHead);
        if (hasContent)
            append(start, Bytes{Tag::context(0), indefinite});
        if (hasContent && !isImplicit)
            append(start, Bytes{Tag::octetString | Tag::constructed, indefinite});
        return start;
    }

    Bytes piece(View content) const {
        return content.empty() || !hasContent ? Bytes() : tlv(Tag::octetString, content);
    }

    Bytes end(View after) const {
        // The markers of the string, of [0] around it and of the inner element; and of the three outer ones.
        Bytes rest((hasContent ? isImplicit ? 2 : 3 : 1) * endMarkerSize);
        append(rest, after);
        rest.resize(rest.size() + 3 * endMarkerSize);
        return rest;
    }
};

// SignedData (RFC 5652, 5.1), apart from its content.
struct SignedParts {
    std::vector<std::string> digests;
    std::string contentType = Oid::data;
    std::vector<Bytes> certificates, signers;

    void addDigest(const std::string& hash) {
        if (std::ranges::find(digests, hash) == digests.end())
            digests.push_back(hash);
    }

    Layout layout(bool hasContent) const {
        Bytes algorithms;
        for (const std::string& digest : digests)
            append(algorithms, algorithm(digest));
        Bytes head = integer(contentType != Oid::data ? 3 : 1);
        append(head, tlv(Tag::set, algorithms));
        return {oid(Oid::signedData), head, oid(contentType), false, hasContent};
    }

    // What follows the content.
    Bytes after() const {
        Bytes all[2];
        for (const Bytes& certificate : certificates)
            append(all[0], certificate);
        for (const Bytes& signer : signers)
            append(all[1], signer);
        Bytes rest = all[0].empty() ? Bytes() : tlv(Tag::context(0), all[0]);
        return append(rest, tlv(Tag::set, all[1]));
    }
};

// IssuerAndSerialNumber
inline Bytes identity(const CERT_INFO& certificate) {
    return tlv(Tag::sequence, viewOf(certificate.Issuer),
               tlv(Tag::integer, reversed(viewOf(certificate.SerialNumber))));
}

// SignerInfo, without attributes, for content of that digest.
inline Bytes signerInfo(const CMSG_SIGNER_ENCODE_INFO& signer, const Bytes& digest) {
    const std::string hash = signer.HashAlgorithm.pszObjId;
    const Bytes signature =
        signDigest(signer.hCryptProv, signer.dwKeySpec ? signer.dwKeySpec : AT_SIGNATURE, hash, digest);
    return tlv(Tag::sequence, integer(1), identity(*signer.pCertInfo), algorithm(hash),
               algorithm(signer.pCertInfo->SubjectPublicKeyInfo.Algorithm.pszObjId),
               tlv(Tag::octetString, signature));
}

}  // namespace Corvane::Platform::Messages
