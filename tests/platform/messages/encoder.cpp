// Messages that are made: signed, and enveloped.
#include "message.h"

#include <functional>
#include <span>

namespace Corvane::Platform::Messages {
namespace {

class Encoder : public Message {
public:
    // What becomes of the content, and what follows it.
    using Process = std::function<Bytes(View, bool)>;
    using End = std::function<Bytes()>;
    Encoder(const CMSG_STREAM_INFO* stream, Layout layout, Process process, End end)
        : Message(stream), layout_(std::move(layout)), process_(std::move(process)), end_(std::move(end)) {}

    // Of a message that is no stream.
    Bytes parameter(DWORD, DWORD) override { return collected_; }

    void update(View bytes, bool isFinal) override {
        const Bytes output = process_(bytes, isFinal);
        if (!isStream())
            return put(layout_.whole(output, end_()));
        if (!std::exchange(isBegun_, true))
            put(layout_.start());
        put(layout_.piece(output));
        if (isFinal)
            put(layout_.end(end_()));
    }

private:
    Layout layout_;
    Process process_;
    End end_;
    bool isBegun_ = false;
};

}  // namespace

OwnedMessage encodeSigned(DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream) {
    SignedParts parts;
    for (const CRYPT_DATA_BLOB& certificate : std::span(info.rgCertEncoded, info.cCertEncoded))
        parts.certificates.push_back(bytesOf(viewOf(certificate)));
    const CMSG_SIGNER_ENCODE_INFO signer = *info.rgSigners;
    parts.addDigest(signer.HashAlgorithm.pszObjId);
    const auto digest = std::make_shared<Digest>(signer.HashAlgorithm.pszObjId);
    const auto process = [digest](View bytes, bool) {
        digest->add(bytes);
        return bytesOf(bytes);
    };
    const auto end = [parts, signer, digest]() mutable {
        parts.signers.push_back(signerInfo(signer, digest->value()));
        return parts.after();
    };
    return std::make_unique<Encoder>(stream, parts.layout(!(flags & CMSG_DETACHED_FLAG)), process, end);
}

OwnedMessage encodeEnveloped(const CMSG_ENVELOPED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream) {
    const auto cipher =
        std::make_shared<ContentCipher>(info.hCryptProv, info.ContentEncryptionAlgorithm.pszObjId);
    Bytes recipients;
    for (const CERT_INFO* one : std::span(info.rgpRecipients, info.cRecipients)) {
        const CERT_PUBLIC_KEY_INFO& key = one->SubjectPublicKeyInfo;
        append(recipients, tlv(Tag::sequence, integer(0), identity(*one),
                               algorithm(key.Algorithm.pszObjId, bytesOf(viewOf(key.Algorithm.Parameters))),
                               tlv(Tag::octetString, cipher->keyFor(info.hCryptProv, key))));
    }
    Layout layout{oid(Oid::envelopedData), integer(0), oid(Oid::data), true};
    append(layout.head, tlv(Tag::set, recipients));
    append(layout.innerHead, cipher->identifier());
    const auto process = [cipher](View bytes, bool isFinal) { return cipher->process(bytes, isFinal); };
    return std::make_unique<Encoder>(stream, layout, process, [] { return Bytes(); });
}

}  // namespace Corvane::Platform::Messages
