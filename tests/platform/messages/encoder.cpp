// Messages that are made: signed, and enveloped.
#include "message.h"

#include <functional>
#include <span>

namespace Corvane::Platform::Messages {
namespace {

constexpr std::uint8_t indefinite = 0x80;
constexpr std::size_t endMarkerSize = 2;

// IssuerAndSerialNumber
Bytes identity(const CERT_INFO& certificate) {
    return tlv(Tag::sequence, viewOf(certificate.Issuer),
               tlv(Tag::integer, reversed(viewOf(certificate.SerialNumber))));
}

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

Bytes Layout::whole(View content, View after) const {
    const Bytes string = !hasContent  ? Bytes()
                         : isImplicit ? tlv(Tag::contextPrimitive(0), content)
                                      : tlv(Tag::context(0), tlv(Tag::octetString, content));
    const Bytes body = tlv(Tag::sequence, head, tlv(Tag::sequence, innerHead, string), after);
    return tlv(Tag::sequence, type, tlv(Tag::context(0), body));
}

Bytes Layout::start() const {
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

Bytes Layout::piece(View content) const {
    return content.empty() || !hasContent ? Bytes() : tlv(Tag::octetString, content);
}

Bytes Layout::end(View after) const {
    // The markers of the string, of [0] around it and of the inner element; and of the three outer elements.
    Bytes rest((hasContent ? isImplicit ? 2 : 3 : 1) * endMarkerSize);
    append(rest, after);
    rest.resize(rest.size() + 3 * endMarkerSize);
    return rest;
}

void SignedParts::addDigest(const std::string& hash) {
    if (std::ranges::find(digests, hash) == digests.end())
        digests.push_back(hash);
}

Layout SignedParts::layout(bool hasContent) const {
    Bytes algorithms;
    for (const std::string& digest : digests)
        append(algorithms, algorithm(digest));
    Bytes head = integer(contentType != Oid::data ? 3 : 1);
    append(head, tlv(Tag::set, algorithms));
    return {oid(Oid::signedData), head, oid(contentType), false, hasContent};
}

Bytes SignedParts::after() const {
    Bytes all[2];
    for (const Bytes& certificate : certificates)
        append(all[0], certificate);
    for (const Bytes& signer : signers)
        append(all[1], signer);
    Bytes rest = all[0].empty() ? Bytes() : tlv(Tag::context(0), all[0]);
    return append(rest, tlv(Tag::set, all[1]));
}

Bytes signerInfo(const CMSG_SIGNER_ENCODE_INFO& signer, const Bytes& digest) {
    const std::string hash = signer.HashAlgorithm.pszObjId;
    const Bytes signature =
        signDigest(signer.hCryptProv, signer.dwKeySpec ? signer.dwKeySpec : AT_SIGNATURE, hash, digest);
    return tlv(Tag::sequence, integer(1), identity(*signer.pCertInfo), algorithm(hash),
               algorithm(signer.pCertInfo->SubjectPublicKeyInfo.Algorithm.pszObjId),
               tlv(Tag::octetString, signature));
}

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
