// Messages that are made: signed, and enveloped.
#include "message.h"

#include <map>
#include <optional>
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
    using Message::Message;

    // Of a message that is no stream.
    Bytes parameter(DWORD, DWORD) override { return collected_; }

    void update(View bytes, bool isFinal) override {
        const Bytes output = process(bytes, isFinal);
        if (!isStream())
            return put(layout_.whole(output, end()));
        if (!std::exchange(isBegun_, true))
            put(layout_.start());
        put(layout_.piece(output));
        if (isFinal)
            put(layout_.end(end()));
    }

protected:
    // What becomes of the content, and what follows it.
    virtual Bytes process(View bytes, bool isFinal) = 0;
    virtual Bytes end() = 0;

    Layout layout_;

private:
    bool isBegun_ = false;
};

class SignedEncoder : public Encoder {
public:
    SignedEncoder(DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream)
        : Encoder(stream), signers_(info.rgSigners, info.rgSigners + info.cSigners) {
        for (const CRYPT_DATA_BLOB& certificate : std::span(info.rgCertEncoded, info.cCertEncoded))
            parts_.certificates.push_back(bytesOf(viewOf(certificate)));
        for (const CMSG_SIGNER_ENCODE_INFO& signer : signers_) {
            parts_.addDigest(signer.HashAlgorithm.pszObjId);
            digests_.try_emplace(signer.HashAlgorithm.pszObjId, signer.HashAlgorithm.pszObjId);
        }
        layout_ = parts_.layout(!(flags & CMSG_DETACHED_FLAG));
    }

private:
    Bytes process(View bytes, bool) override {
        for (auto& [hash, digest] : digests_)
            digest.add(bytes);
        return bytesOf(bytes);
    }
    Bytes end() override {
        for (const CMSG_SIGNER_ENCODE_INFO& signer : signers_)
            parts_.signers.push_back(signerInfo(signer, digests_.at(signer.HashAlgorithm.pszObjId).value()));
        return parts_.after();
    }

    SignedParts parts_;
    std::vector<CMSG_SIGNER_ENCODE_INFO> signers_;
    std::map<std::string, Digest> digests_;
};

class EnvelopedEncoder : public Encoder {
public:
    EnvelopedEncoder(const CMSG_ENVELOPED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream)
        : Encoder(stream), cipher_(info.hCryptProv, info.ContentEncryptionAlgorithm.pszObjId) {
        Bytes recipients;
        for (const CERT_INFO* one : std::span(info.rgpRecipients, info.cRecipients)) {
            const CERT_PUBLIC_KEY_INFO& key = one->SubjectPublicKeyInfo;
            const CRYPT_DATA_BLOB& parameters = key.Algorithm.Parameters;
            append(recipients, tlv(Tag::sequence, integer(0), identity(*one),
                                   algorithm(key.Algorithm.pszObjId, bytesOf(viewOf(parameters))),
                                   tlv(Tag::octetString, cipher_.keyFor(info.hCryptProv, key))));
        }
        layout_ = {oid(Oid::envelopedData), integer(0), oid(Oid::data), true};
        append(layout_.head, tlv(Tag::set, recipients));
        append(layout_.innerHead, cipher_.identifier());
    }

private:
    Bytes process(View bytes, bool isFinal) override { return cipher_.process(bytes, isFinal); }
    Bytes end() override { return {}; }

    ContentCipher cipher_;
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
    return std::make_unique<SignedEncoder>(flags, info, stream);
}

OwnedMessage encodeEnveloped(const CMSG_ENVELOPED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream) {
    return std::make_unique<EnvelopedEncoder>(info, stream);
}

}  // namespace Corvane::Platform::Messages
