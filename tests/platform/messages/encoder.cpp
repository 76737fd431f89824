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
    void parameter(DWORD type, DWORD, Answer answer) override {
        type == CMSG_CONTENT_PARAM ? answer.give(sink_.collected()) : fail(CRYPT_E_INVALID_MSG_TYPE);
    }

    // A whole message is made in one piece; so Windows wants its content.
    void update(View bytes, bool isFinal) override {
        if (isFinished_ || (!sink_.isStream() && !isFinal))
            fail(CRYPT_E_MSG_ERROR);
        if (!isBegun_) {
            const DWORD size = sink_.isStream() ? sink_.announced() : lengthOf(bytes);
            layout_.isIndefinite = sink_.isStream() && size == CMSG_INDEFINITE_LENGTH && layout_.hasContent;
            sink_.put(layout_.start(layout_.isIndefinite ? 0 : outputSize(size), end(false).size()));
        }
        const Bytes output = process(bytes, isFinal);
        if (layout_.hasContent)
            sink_.put(layout_.piece(output));
        isBegun_ = true;
        isFinished_ = isFinal;
        if (isFinal)
            sink_.put(layout_.end(end(true)), true);
    }

protected:
    // What becomes of the content, and of content of that size.
    virtual Bytes process(View bytes, bool isFinal) = 0;
    virtual std::uint64_t outputSize(std::uint64_t size) const { return size; }
    // What follows it. Before it is known only the size is right.
    virtual Bytes end(bool isKnown) = 0;

    Layout layout_;

private:
    bool isBegun_ = false, isFinished_ = false;
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
    Bytes end(bool isKnown) override {
        parts_.signers.clear();
        for (const NewSigner& signer : signers_)
            parts_.signers.push_back(
                signer.signerInfo(isKnown ? &digests_.at(signer.number).value() : nullptr));
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
    std::uint64_t outputSize(std::uint64_t size) const override { return cipher_->encryptedSize(size); }
    Bytes end(bool) override { return {}; }

    std::optional<ContentCipher> cipher_;
};

}  // namespace

Bytes Layout::start(std::uint64_t contentSize, std::size_t endSize) const {
    Bytes start;
    const auto within = [&](std::uint8_t tag, std::uint64_t later) {
        Bytes around = isIndefinite ? Bytes{tag, indefinite} : header(tag, start.size() + later);
        start = std::move(append(around, start));
    };
    const auto after = [&](const Bytes& front) { start.insert(start.begin(), front.begin(), front.end()); };
    if (hasContent && !isImplicit)
        within(isIndefinite ? Tag::octetString | Tag::constructed : Tag::octetString, contentSize);
    if (hasContent)
        within(isImplicit && !isIndefinite ? Tag::context(0) : Tag::within(0), contentSize);
    const std::uint64_t later = hasContent ? contentSize : 0;
    after(innerHead);
    within(Tag::sequence, later);
    after(head);
    within(Tag::sequence, later + endSize);
    within(Tag::within(0), later + endSize);
    after(type);
    within(Tag::sequence, later + endSize);
    return start;
}

Bytes Layout::piece(View content) const {
    return isIndefinite && !content.empty() ? tlv(Tag::octetString, content) : bytesOf(content);
}

Bytes Layout::end(View after) const {
    if (!isIndefinite)
        return bytesOf(after);
    // The markers of the string, of [0] around it and of the inner element; and of the three outer elements.
    Bytes rest((isImplicit ? 2 : 3) * endMarkerSize);
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
