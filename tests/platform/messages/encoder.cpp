// Messages that are made: signed, and enveloped.
#include "signer.h"

#include <map>

namespace Corvane::Platform::Messages {
namespace {

constexpr std::uint8_t indefinite = 0x80;

class Encoder : public Message {
public:
    using Message::Message;

    // Of a message that is no stream.
    void parameter(DWORD, DWORD, Answer answer) override { answer.give(sink_.collected()); }

    void update(View bytes, bool isFinal) override {
        const Bytes output = process(bytes, isFinal);
        if (!sink_.isStream())
            return sink_.put(layout_.whole(output, end()));
        if (!std::exchange(isBegun_, true))
            sink_.put(layout_.start());
        sink_.put(layout_.piece(output));
        if (isFinal)
            sink_.put(layout_.end(end()));
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
        : Encoder(stream) {
        for (DWORD i = 0; i < info.cCertEncoded; ++i)
            parts_.certificates.push_back(bytesOf(viewOf(info.rgCertEncoded[i])));
        for (DWORD i = 0; i < info.cSigners; ++i) {
            const NewSigner& signer = signers_.emplace_back(info.rgSigners[i]);
            parts_.addDigest(signer.hash);
            digests_.try_emplace(signer.number, signer.number, signer.provider);
        }
        layout_ = parts_.layout();
        layout_.hasContent = !(flags & CMSG_DETACHED_FLAG);
    }

private:
    Bytes process(View bytes, bool) override {
        for (auto& [number, digest] : digests_)
            digest.add(bytes);
        return bytesOf(bytes);
    }
    Bytes end() override {
        for (const NewSigner& signer : signers_)
            parts_.signers.push_back(signer.signerInfo(digests_.at(signer.number).value()));
        return parts_.after();
    }

    SignedParts parts_;
    std::list<NewSigner> signers_;
    std::map<ALG_ID, Digest> digests_;
};

class EnvelopedEncoder : public Encoder {
public:
    EnvelopedEncoder(const CMSG_ENVELOPED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream)
        : Encoder(stream) {
        AlgorithmId algorithm = AlgorithmId::of(info.ContentEncryptionAlgorithm);
        CryptKey key = makeContentKey(info.hCryptProv, algorithm);
        Bytes recipients;
        for (DWORD i = 0; i < info.cRecipients; ++i) {
            const CERT_INFO& one = *info.rgpRecipients[i];
            const CERT_PUBLIC_KEY_INFO& publicKey = one.SubjectPublicKeyInfo;
            append(recipients,
                   tlv(Tag::sequence, integer(0), Identity::of(one).der(),
                       AlgorithmId::of(publicKey.Algorithm).der(),
                       tlv(Tag::octetString, exportContentKey(info.hCryptProv, key.get(), publicKey))));
        }
        layout_ = {oid(Oid::envelopedData), integer(0), oid(Oid::data), true};
        append(layout_.head, tlv(Tag::set, recipients));
        append(layout_.innerHead, algorithm.der());
        cipher_.emplace(std::move(key), true);
    }

private:
    Bytes process(View bytes, bool isFinal) override { return cipher_->process(bytes, isFinal); }
    Bytes end() override { return {}; }

    std::optional<ContentCipher> cipher_;
};

}  // namespace

Bytes Layout::whole(View content, View after) const {
    const Bytes string = !hasContent  ? Bytes()
                         : isImplicit ? tlv(Tag::context(0), content)
                                      : tlv(Tag::within(0), tlv(Tag::octetString, content));
    const Bytes body = tlv(Tag::sequence, head, tlv(Tag::sequence, innerHead, string), after);
    return tlv(Tag::sequence, type, tlv(Tag::within(0), body));
}

Bytes Layout::start() const {
    Bytes start{Tag::sequence, indefinite};
    append(start, type);
    append(start, Bytes{Tag::within(0), indefinite, Tag::sequence, indefinite});
    append(start, head);
    append(start, Bytes{Tag::sequence, indefinite});
    append(start, innerHead);
    if (hasContent)
        append(start, Bytes{Tag::within(0), indefinite});
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

OwnedMessage encodeSigned(DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream) {
    return std::make_unique<SignedEncoder>(flags, info, stream);
}

OwnedMessage encodeEnveloped(const CMSG_ENVELOPED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream) {
    return std::make_unique<EnvelopedEncoder>(info, stream);
}

}  // namespace Corvane::Platform::Messages
