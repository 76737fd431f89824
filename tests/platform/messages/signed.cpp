// Signed messages: made, and read with their parts, verification, and adding of signers and certificates.
#include "content_reader.h"
#include "layout.h"
#include "signer.h"

#include <algorithm>
#include <map>
#include <optional>
#include <vector>

namespace Corvane::Platform::Messages {
namespace {

// SignedData (RFC 5652, 5.1), apart from its content.
struct SignedParts {
    std::vector<AlgorithmId> digests;
    std::string contentType = Oid::data;
    std::vector<Bytes> certificates, crls, signers;

    void addDigest(const AlgorithmId& algorithm);
    Layout::Parts before() const;
    Bytes after() const;
};

Bytes collection(std::uint8_t tag, const std::vector<Bytes>& elements, bool isOptional) {
    if (isOptional && elements.empty())
        return {};
    Bytes content;
    for (const Bytes& element : elements)
        append(content, element);
    return tlv(tag, content);
}

void SignedParts::addDigest(const AlgorithmId& algorithm) {
    if (std::ranges::find(digests, algorithm.oid, &AlgorithmId::oid) == digests.end())
        digests.push_back(algorithm);
}

Layout::Parts SignedParts::before() const {
    std::vector<Bytes> algorithms;
    for (const AlgorithmId& digest : digests)
        algorithms.push_back(digest.parameters.empty()
                                 ? tlv(Tag::sequence, oid(digest.oid), Bytes{Tag::null, 0})
                                 : digest.der());
    Bytes head = integer(contentType != Oid::data ? 3 : 1);
    append(head, collection(Tag::set, algorithms, false));
    return {oid(Oid::signedData), head, oid(contentType)};
}

Bytes SignedParts::after() const {
    Bytes rest = collection(Tag::within(0), certificates, true);
    append(rest, collection(Tag::within(1), crls, true));
    return append(rest, collection(Tag::set, signers, false));
}

class SignedEncoder : public Message {
public:
    SignedEncoder(DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream)
        : isDetached_((flags & CMSG_DETACHED_FLAG) != 0), sink_(stream) {
        for (DWORD i = 0; i < info.cCertEncoded; ++i)
            append(parts_.certificates.emplace_back(), viewOf(info.rgCertEncoded[i]));
        for (DWORD i = 0; i < info.cSigners; ++i) {
            const NewSigner& signer = signers_.emplace_back(info.rgSigners[i]);
            parts_.addDigest(signer.hash());
            digests_.try_emplace(signer.hashNumber(), signer.hashNumber(), signer.provider());
        }
    }

    void update(View bytes, bool isFinal) override {
        // A whole message is made in one piece; so Windows wants its content.
        if (!sink_.isStream() && !isDetached_ && !isFinal)
            fail(CRYPT_E_MSG_ERROR);
        if (isFinished_)
            fail(CRYPT_E_MSG_ERROR);
        isFinished_ = isFinal;
        for (auto& [number, digest] : digests_)
            digest.add(bytes);
        if (!isDetached_) {
            begin(bytes.size());
            layout_->content(bytes);
        }
        if (isFinal)
            finish();
    }

    void parameter(DWORD type, DWORD, Answer answer) override { sink_.give(type, answer); }

    std::uint64_t sizeWith(std::size_t contentSize) {
        begin(contentSize);
        return sink_.collected().size() + (isDetached_ ? 0 : contentSize) + endSize();
    }

private:
    void begin(std::size_t size) {
        if (layout_)
            return;
        layout_.emplace(parts_.before(), sink_);
        if (isDetached_)
            layout_->beginDefinite(std::nullopt, endSize());
        else if (sink_.isStream() && sink_.announced() == CMSG_INDEFINITE_LENGTH)
            layout_->beginIndefinite();
        else
            layout_->beginDefinite(sink_.isStream() ? sink_.announced() : size, endSize());
    }

    std::vector<Bytes> signerInfos(bool isReal) {
        std::vector<Bytes> all;
        for (const NewSigner& signer : signers_)
            all.push_back(signer.signerInfo(isReal ? &digests_.at(signer.hashNumber()).value() : nullptr));
        return all;
    }

    // Known before anything is signed.
    std::size_t endSize() {
        parts_.signers = signerInfos(false);
        return parts_.after().size();
    }

    void finish() {
        begin(0);
        parts_.signers = signerInfos(true);
        layout_->end(parts_.after());
    }

    bool isDetached_;
    Sink sink_;
    SignedParts parts_;
    std::vector<NewSigner> signers_;
    std::map<ALG_ID, Digest> digests_;
    std::optional<Layout> layout_;
    bool isFinished_ = false;
};

class SignedDecoder : public Message, private ContentReader {
public:
    SignedDecoder(bool isDetached, const CMSG_STREAM_INFO* stream) : isDetached_(isDetached), sink_(stream) {}

    void update(View bytes, bool isFinal) override {
        if (isComplete_)
            fail(CRYPT_E_MSG_ERROR);
        if (isWhole()) {
            readContent(bytes);
            isComplete_ = isFinal;
        } else {
            read(bytes, isFinal);
            isComplete_ = isWhole() && !(isDetached_ && !hasContent_);
        }
        if (isFinal && isComplete_)
            sink_.put({}, true);
    }

    void parameter(DWORD type, DWORD index, Answer answer) override {
        if (type == CMSG_TYPE_PARAM && isHeadRead())
            return answer.give(DWORD{CMSG_SIGNED});
        if (!isWhole())
            fail(sink_.isStream() ? CRYPT_E_STREAM_MSG_NOT_READY : CRYPT_E_INVALID_MSG_TYPE);
        if (!messageParameter(type, index, answer))
            signerParameter(type, index, answer);
    }

    void control(DWORD, DWORD type, const void* argument) override {
        if (!isWhole())
            fail(sink_.isStream() ? CRYPT_E_STREAM_MSG_NOT_READY : CRYPT_E_INVALID_MSG_TYPE);
        switch (type) {
            case CMSG_CTRL_VERIFY_SIGNATURE_EX:
                return verify(*static_cast<const CMSG_CTRL_VERIFY_SIGNATURE_EX_PARA*>(argument));
            case CMSG_CTRL_ADD_SIGNER:
                return addSigner(*static_cast<const CMSG_SIGNER_ENCODE_INFO*>(argument));
            case CMSG_CTRL_ADD_CERT:
                append(parts_.certificates.emplace_back(),
                       viewOf(*static_cast<const CRYPT_DATA_BLOB*>(argument)));
                return;
            default:
                fail(CRYPT_E_CONTROL_TYPE);
        }
    }

private:
    bool readHead(Cursor& cursor) override {
        enterMessage(cursor, Oid::signedData);
        SignedParts parts;
        for (Reader digests(cursor.next().content); !digests.atEnd();)
            parts.addDigest(AlgorithmId::read(digests.enter(Tag::sequence)));
        cursor.enter(Tag::sequence);
        parts.contentType = oidText(cursor.next().content);
        const bool hasContent = cursor.isNext(Tag::within(0));
        if (hasContent) {
            cursor.enter();
            if ((cursor.enter().tag & ~Tag::constructed) != Tag::octetString)
                throw BerError("content that is no octet string");
        }
        parts_ = std::move(parts);
        hasContent_ = hasContent;
        startDigests();
        return hasContent;
    }

    // Signers with an algorithm that is not known cannot be verified, which is told then.
    void startDigests() {
        for (const AlgorithmId& digest : parts_.digests) {
            const ALG_ID number = algorithmNumber(digest.oid, CRYPT_HASH_ALG_OID_GROUP_ID);
            if (number)
                succeeds([&] { digests_.try_emplace(number, number); });
        }
    }

    // In a stream nothing stays in memory but the running digests.
    void readContent(View bytes) override {
        for (auto& [number, digest] : digests_)
            digest.add(bytes);
        if (!sink_.isStream() || !isDetached_)
            sink_.put(bytes);
    }

    void readEnd(Cursor& cursor) override {
        if (hasContent_)
            cursor.leave();
        cursor.leave();
        bool hasSigners = false;
        for (; !cursor.isAtEnd() && !cursor.rest().empty();) {
            const Element element = cursor.next();
            hasSigners = element.tag == Tag::set;
            if (element.tag == Tag::within(0))
                take(parts_.certificates, element.content);
            else if (element.tag == Tag::within(1))
                take(parts_.crls, element.content);
            else if (element.tag == Tag::set)
                take(parts_.signers, element.content);
            else
                throw BerError("an unknown part of signed data");
        }
        if (!cursor.isAtEnd())
            throw Truncated();
        if (!hasSigners)
            throw BerError("signed data that end without a set of signers");
    }

    static const Bytes& at(const std::vector<Bytes>& all, DWORD index) {
        return index < all.size() ? all[index] : (fail(CRYPT_E_INVALID_INDEX), all[0]);
    }

    bool messageParameter(DWORD type, DWORD index, Answer& answer) {
        switch (type) {
            case CMSG_CONTENT_PARAM:
                return answer.give(sink_.collected()), true;
            case hasContentParam:
                return answer.give(DWORD{hasContent_}), true;
            case CMSG_INNER_CONTENT_TYPE_PARAM:
                return answer.build([&](Flat& flat) { flat.text(parts_.contentType); }), true;
            case CMSG_SIGNER_COUNT_PARAM:
                return answer.give(static_cast<DWORD>(parts_.signers.size())), true;
            case CMSG_CERT_COUNT_PARAM:
                return answer.give(static_cast<DWORD>(parts_.certificates.size())), true;
            case CMSG_CERT_PARAM:
                return answer.give(at(parts_.certificates, index)), true;
            case CMSG_ENCODED_MESSAGE:
                return answer.give(encoded()), true;
            case CMSG_COMPUTED_HASH_PARAM:
                return answer.give(contentDigest(ReadSigner(at(parts_.signers, index)))), true;
            default:
                return false;
        }
    }

    void signerParameter(DWORD type, DWORD index, Answer& answer) const {
        const ReadSigner signer(at(parts_.signers, index));
        switch (type) {
            case CMSG_SIGNER_INFO_PARAM:
                return answer.give(PKCS7_SIGNER_INFO, signer.named());
            case CMSG_SIGNER_CERT_INFO_PARAM:
                return answer.build([&](Flat& flat) {
                    auto* const info = flat.make<CERT_INFO>();
                    *info = signer.identity.certificateInfo(flat);
                });
            case CMSG_SIGNER_CERT_ID_PARAM:
                return answer.build([&](Flat& flat) {
                    auto* const id = flat.make<CERT_ID>();
                    *id = signer.identity.certificateId(flat);
                });
            case CMSG_ENCODED_SIGNER:
                return answer.give(signer.whole);
            default:
                fail(CRYPT_E_INVALID_MSG_TYPE);
        }
    }

    // The one that was computed as the content came, or of content that is in memory.
    Bytes contentDigest(const ReadSigner& signer) {
        return contentDigest(algorithmNumber(signer.hash.oid, CRYPT_HASH_ALG_OID_GROUP_ID));
    }

    Bytes contentDigest(ALG_ID number) {
        // What comes after it was asked for is refused.
        isComplete_ = true;
        if (const auto found = digests_.find(number); found != digests_.end())
            return found->second.value();
        if (sink_.isStream())
            fail(CRYPT_E_UNKNOWN_ALGO);
        return digestOf(number, sink_.collected());
    }

    void verify(const CMSG_CTRL_VERIFY_SIGNATURE_EX_PARA& how) {
        const ReadSigner signer(at(parts_.signers, how.dwSignerIndex));
        if (how.dwSignerType != CMSG_VERIFY_SIGNER_CERT)
            fail(E_INVALIDARG);
        signer.verify(static_cast<const CERT_CONTEXT*>(how.pvSigner)->pCertInfo->SubjectPublicKeyInfo,
                      contentDigest(signer), parts_.contentType);
    }

    void addSigner(const CMSG_SIGNER_ENCODE_INFO& info) {
        const NewSigner signer(info);
        const Bytes digest = contentDigest(signer.hashNumber());
        parts_.signers.push_back(signer.signerInfo(&digest));
        parts_.addDigest(signer.hash());
    }

    Bytes encoded() const {
        if (sink_.isStream())
            fail(CRYPT_E_INVALID_MSG_TYPE);
        Sink whole(nullptr);
        Layout layout(parts_.before(), whole);
        const Bytes after = parts_.after();
        layout.beginDefinite(
            hasContent_ ? std::optional<std::uint64_t>(sink_.collected().size()) : std::nullopt,
            after.size());
        if (hasContent_)
            layout.content(sink_.collected());
        layout.end(after);
        return whole.collected();
    }

    bool isDetached_, hasContent_ = false;
    bool isComplete_ = false;
    Sink sink_;
    SignedParts parts_;
    std::map<ALG_ID, Digest> digests_;
};

}  // namespace

OwnedMessage encodeSigned(DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream) {
    return std::make_unique<SignedEncoder>(flags, info, stream);
}

std::uint64_t signedSize(DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info, DWORD contentSize) {
    return SignedEncoder(flags, info, nullptr).sizeWith(contentSize);
}

OwnedMessage decodeSigned(bool isDetached, const CMSG_STREAM_INFO* stream) {
    return std::make_unique<SignedDecoder>(isDetached, stream);
}

}  // namespace Corvane::Platform::Messages
