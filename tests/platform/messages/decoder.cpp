// Messages that are read, in pieces or at once: what stands before the content, the content as it comes, and
// the rest; and what is asked of them.
#include "signer.h"

#include <map>

namespace Corvane::Platform::Messages {
namespace {

// A place in a message, and the elements around it. What throws Truncated has consumed nothing by then.
class Cursor {
public:
    View rest;  // what is at hand

    std::size_t depth() const { return levels_.size(); }
    bool isConstructed() const { return levels_.back().isConstructed; }

    // Whether the innermost element ends here, but for its end marker.
    bool atEnd() const {
        if (levels_.empty() || !levels_.back().isIndefinite)
            return position_ == end();
        if (rest.empty() || (rest[0] == 0 && rest.size() < endMarkerSize))
            throw Truncated();
        return rest[0] == 0 && rest[1] == 0;
    }
    bool isNext(std::uint8_t tag) const {
        if (atEnd())
            return false;
        return rest.empty() ? throw Truncated() : rest[0] == tag;
    }
    View take(std::size_t size) {
        if (size > end() - position_)
            throw BerError("longer than what is around it");
        if (size > rest.size())
            throw Truncated();
        const View taken = rest.first(size);
        rest = rest.subspan(size);
        position_ += size;
        return taken;
    }
    // What is there of the innermost element, which is primitive.
    View takeContent() {
        return take(static_cast<std::size_t>(std::min<std::uint64_t>(end() - position_, rest.size())));
    }
    std::uint8_t enter() {
        const Header head = readHeader(rest);
        if (depth() >= deepest)
            throw BerError("nested too deep");
        take(head.size);
        if (!head.isIndefinite && head.length > end() - position_)
            throw BerError("longer than what is around it");
        levels_.push_back({head.isIndefinite, (head.tag & Tag::constructed) != 0,
                           head.isIndefinite ? end() : position_ + head.length});
        return head.tag;
    }
    void enter(std::uint8_t tag) {
        if (!isNext(tag))
            throw BerError("another tag than expected");
        enter();
    }
    void leave() {
        if (!atEnd())
            throw BerError("more than belongs there");
        take(levels_.back().isIndefinite ? endMarkerSize : 0);
        levels_.pop_back();
    }
    Element next() {
        const Element element = Reader(rest).next();
        take(element.whole.size());
        return element;
    }

private:
    struct Level {
        bool isIndefinite, isConstructed;
        std::uint64_t end;  // where the length is indefinite, of what is around
    };
    std::uint64_t end() const { return levels_.empty() ? UINT64_MAX : levels_.back().end; }

    std::vector<Level> levels_;
    std::uint64_t position_ = 0;
};

// The elements of a set, or of what has another tag in its place.
std::vector<Bytes> elementsOf(View set) {
    std::vector<Bytes> all;
    for (Reader reader(set); !reader.atEnd();)
        all.push_back(bytesOf(reader.next().whole));
    return all;
}

const Bytes& at(const std::vector<Bytes>& all, DWORD index) {
    return index < all.size() ? all[index] : (fail(CRYPT_E_INVALID_INDEX), all[0]);
}

// What is particular to a kind of message.
class Body {
public:
    Body(bool isDetached, Sink& sink) : isDetached_(isDetached), sink_(sink) {}
    Body(const Body&) = delete;
    Body& operator=(const Body&) = delete;
    virtual ~Body() = default;

    // What follows the version, up to the header of the content: enters it, or leaves the cursor where it
    // would stand and returns false.
    virtual bool readHead(Cursor& cursor) = 0;
    virtual void readContent(View bytes) = 0;
    // What follows the content.
    virtual void readEnd(Cursor& cursor) = 0;
    virtual void parameter(DWORD type, DWORD index, Answer& answer) = 0;
    virtual void control(DWORD type, const void* argument) = 0;

protected:
    bool isDetached_, hasContent_ = false;
    Sink& sink_;
};

class SignedBody : public Body {
public:
    using Body::Body;

    bool readHead(Cursor& cursor) override {
        for (const Bytes& digest : elementsOf(cursor.next().content))
            parts_.addDigest(AlgorithmId::read(Reader(digest).enter(Tag::sequence)));
        cursor.enter(Tag::sequence);
        parts_.contentType = oidText(cursor.next().content);
        hasContent_ = cursor.isNext(Tag::within(0));
        if (hasContent_) {
            cursor.enter();
            if ((cursor.enter() & ~Tag::constructed) != Tag::octetString)
                throw BerError("content that is no octet string");
        }
        // Signers with an algorithm that is not known cannot be verified, which is told then.
        for (const AlgorithmId& digest : parts_.digests)
            succeeds([&] { digests_.try_emplace(hashNumber(digest.oid), hashNumber(digest.oid)); });
        return hasContent_;
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
        while (!cursor.atEnd()) {
            const Element element = cursor.next();
            hasSigners = element.tag == Tag::set;
            if (element.tag == Tag::within(0))
                parts_.certificates = elementsOf(element.content);
            else if (element.tag == Tag::set)
                parts_.signers = elementsOf(element.content);
            else
                throw BerError("an unknown part of signed data");
        }
        if (!hasSigners)
            throw BerError("signed data that end without a set of signers");
    }

    void parameter(DWORD type, DWORD index, Answer& answer) override {
        switch (type) {
            case CMSG_TYPE_PARAM:
                return answer.give(CMSG_SIGNED);
            case CMSG_CONTENT_PARAM:
                return answer.give(sink_.collected());
            case hasContentParam:
                return answer.give(hasContent_);
            case CMSG_INNER_CONTENT_TYPE_PARAM:
                return answer.build([&](Flat& flat) { flat.text(parts_.contentType); });
            case CMSG_SIGNER_COUNT_PARAM:
                return answer.give(parts_.signers.size());
            case CMSG_CERT_COUNT_PARAM:
                return answer.give(parts_.certificates.size());
            case CMSG_CERT_PARAM:
                return answer.give(at(parts_.certificates, index));
            case CMSG_ENCODED_MESSAGE:
                return answer.give(encoded());
            default:
                return signerParameter(type, ReadSigner(at(parts_.signers, index)), answer);
        }
    }

    void control(DWORD type, const void* argument) override {
        if (type == CMSG_CTRL_VERIFY_SIGNATURE_EX)
            verify(*static_cast<const CMSG_CTRL_VERIFY_SIGNATURE_EX_PARA*>(argument));
        else if (type == CMSG_CTRL_ADD_SIGNER)
            addSigner(NewSigner(*static_cast<const CMSG_SIGNER_ENCODE_INFO*>(argument)));
        else
            parts_.certificates.push_back(bytesOf(viewOf(*static_cast<const CRYPT_DATA_BLOB*>(argument))));
    }

private:
    void signerParameter(DWORD type, const ReadSigner& signer, Answer& answer) {
        switch (type) {
            case CMSG_COMPUTED_HASH_PARAM:
                return answer.give(contentDigest(signer.hash));
            case CMSG_SIGNER_INFO_PARAM:
                return answer.give(PKCS7_SIGNER_INFO, signer.named());
            case CMSG_SIGNER_CERT_INFO_PARAM:
                return answer.build([&](Flat& flat) {
                    auto& info = flat.make<CERT_INFO>();
                    info = signer.identity.certificateInfo(flat);
                });
            case CMSG_SIGNER_CERT_ID_PARAM:
                return answer.build([&](Flat& flat) {
                    auto& id = flat.make<CERT_ID>();
                    id = signer.identity.certificateId(flat);
                });
            case CMSG_ENCODED_SIGNER:
                return answer.give(signer.whole);
            default:
                fail(CRYPT_E_INVALID_MSG_TYPE);
        }
    }

    // The one that was computed as the content came, or of content that is in memory.
    Bytes contentDigest(ALG_ID number) {
        if (const auto found = digests_.find(number); found != digests_.end())
            return found->second.value();
        return sink_.isStream() ? (fail(CRYPT_E_UNKNOWN_ALGO), Bytes()) : digestOf(number, sink_.collected());
    }

    void verify(const CMSG_CTRL_VERIFY_SIGNATURE_EX_PARA& how) {
        const ReadSigner signer(at(parts_.signers, how.dwSignerIndex));
        if (how.dwSignerType != CMSG_VERIFY_SIGNER_CERT)
            fail(E_INVALIDARG);
        signer.verify(static_cast<const CERT_CONTEXT*>(how.pvSigner)->pCertInfo->SubjectPublicKeyInfo,
                      contentDigest(signer.hash), parts_.contentType);
    }

    void addSigner(const NewSigner& signer) {
        const Bytes digest = contentDigest(signer.number);
        parts_.signers.push_back(signer.signerInfo(digest));
        parts_.addDigest(signer.hash);
    }

    Bytes encoded() const {
        if (sink_.isStream())
            fail(CRYPT_E_INVALID_MSG_TYPE);
        Layout layout = parts_.layout();
        layout.hasContent = hasContent_;
        return layout.whole(sink_.collected(), parts_.after());
    }

    SignedParts parts_;
    std::map<ALG_ID, Digest> digests_;
};

class EnvelopedBody : public Body {
public:
    using Body::Body;

    bool readHead(Cursor& cursor) override {
        recipients_ = elementsOf(cursor.next().content);
        cursor.enter(Tag::sequence);
        cursor.next();  // the content's type
        algorithm_ = AlgorithmId::read(Reader(cursor.next().content));
        hasContent_ = cursor.isNext(Tag::context(0)) || cursor.isNext(Tag::within(0));
        if (hasContent_)
            cursor.enter();
        return hasContent_;
    }

    void readContent(View bytes) override {
        if (cipher_)
            sink_.put(cipher_->process(bytes, false));
        else
            append(queue_, bytes);
    }

    void readEnd(Cursor& cursor) override {
        cursor.leave();
        isWhole_ = true;
        if (cipher_)
            decryptQueue();
    }

    void parameter(DWORD type, DWORD index, Answer& answer) override {
        switch (type) {
            case CMSG_TYPE_PARAM:
                return answer.give(CMSG_ENVELOPED);
            case CMSG_CONTENT_PARAM:
                return answer.give(sink_.collected());
            case CMSG_ENVELOPE_ALGORITHM_PARAM:
                return answer.build([&](Flat& flat) {
                    auto& algorithm = flat.make<CRYPT_ALGORITHM_IDENTIFIER>();
                    algorithm = {flat.text(algorithm_.oid), flat.blob(algorithm_.parameters)};
                });
            case CMSG_CMS_RECIPIENT_COUNT_PARAM:
                return answer.give(recipients_.size());
            case CMSG_CMS_RECIPIENT_INFO_PARAM:
                return answer.build([&](Flat& flat) { tellRecipient(at(recipients_, index), flat); });
            default:
                fail(CRYPT_E_INVALID_MSG_TYPE);
        }
    }

    void control(DWORD, const void* argument) override {
        const auto& how = *static_cast<const CMSG_CTRL_KEY_TRANS_DECRYPT_PARA*>(argument);
        Reader reader = Reader(at(recipients_, how.dwRecipientIndex)).enter(Tag::sequence);
        reader.next(Tag::integer);
        reader.next();
        const AlgorithmId transport = AlgorithmId::read(reader.enter(Tag::sequence));
        cipher_.emplace(importContentKey(how.hCryptProv, how.dwKeySpec, algorithm_, transport.oid,
                                         reader.next(Tag::octetString).content),
                        false);
        decryptQueue();
    }

private:
    // Of other kinds than key transport the kind alone.
    static void tellRecipient(const Bytes& encoded, Flat& flat) {
        auto& info = flat.make<CMSG_CMS_RECIPIENT_INFO>();
        if (encoded[0] == Tag::sequence) {
            Reader reader = Reader(encoded).enter(Tag::sequence);
            reader.next(Tag::integer);
            auto& transport = flat.make<CMSG_KEY_TRANS_RECIPIENT_INFO>();
            transport.RecipientId = Identity::read(reader.next()).certificateId(flat);
            info.dwRecipientChoice = CMSG_KEY_TRANS_RECIPIENT;
            info.pKeyTrans = &transport;
        } else {
            info.dwRecipientChoice =
                encoded[0] == Tag::within(1) ? CMSG_KEY_AGREE_RECIPIENT : CMSG_MAIL_LIST_RECIPIENT;
            info.pKeyAgree = &flat.make<CMSG_KEY_AGREE_RECIPIENT_INFO>();
        }
    }

    void decryptQueue() {
        sink_.put(cipher_->process(queue_, isWhole_));
        queue_ = {};
    }

    bool isWhole_ = false;
    AlgorithmId algorithm_;
    std::vector<Bytes> recipients_;
    Bytes queue_;  // what came before the key
    std::optional<ContentCipher> cipher_;
};

class Decoder : public Message {
public:
    Decoder(bool isDetached, const CMSG_STREAM_INFO* stream) : Message(stream), isDetached_(isDetached) {}

    void update(View bytes, bool isFinal) override {
        if (phase_ != Phase::whole)
            return read(bytes, isFinal);
        if (hasContent_ || !isDetached_)
            fail(CRYPT_E_MSG_ERROR);
        body_->readContent(bytes);
    }
    void parameter(DWORD type, DWORD index, Answer answer) override { body().parameter(type, index, answer); }
    void control(DWORD type, const void* argument) override { body().control(type, argument); }

private:
    enum class Phase { head, content, end, whole };

    Body& body() const { return body_ ? *body_ : (fail(CRYPT_E_STREAM_MSG_NOT_READY), *body_); }

    void read(View bytes, bool isFinal) {
        append(pending_, bytes);
        cursor_.rest = pending_;
        try {
            if (phase_ == Phase::head)
                readHead();
            while (phase_ == Phase::content)
                readPiece();
            if (isFinal) {
                body_->readEnd(cursor_);
                phase_ = Phase::whole;
            }
        } catch (const Truncated&) {
            if (isFinal)
                throw;
        }
        // What is not whole is read again with what comes next.
        pending_.erase(pending_.begin(), pending_.end() - static_cast<std::ptrdiff_t>(cursor_.rest.size()));
    }

    void readHead() {
        Cursor cursor = cursor_;
        cursor.enter(Tag::sequence);
        const std::string type = oidText(cursor.next().content);
        std::unique_ptr<Body> body;
        if (type == Oid::signedData)
            body = std::make_unique<SignedBody>(isDetached_, sink_);
        else if (type == Oid::envelopedData)
            body = std::make_unique<EnvelopedBody>(isDetached_, sink_);
        else
            fail(CRYPT_E_INVALID_MSG_TYPE);
        cursor.enter(Tag::within(0));
        cursor.enter(Tag::sequence);
        cursor.next();  // the version, which says no more than what is there
        hasContent_ = body->readHead(cursor);
        phase_ = hasContent_ ? Phase::content : Phase::end;
        outside_ = cursor.depth() - 1;
        body_ = std::move(body);
        cursor_ = std::move(cursor);
    }

    // One header, one end, or what is there of one piece; strings in pieces may be nested.
    void readPiece() {
        if (cursor_.atEnd()) {
            cursor_.leave();
            phase_ = cursor_.depth() > outside_ ? Phase::content : Phase::end;
        } else if (cursor_.rest.empty()) {
            throw Truncated();
        } else if (!cursor_.isConstructed()) {
            body_->readContent(cursor_.takeContent());
        } else if ((cursor_.enter() & ~Tag::constructed) != Tag::octetString) {
            throw BerError("an octet string of other things");
        }
    }

    bool isDetached_, hasContent_ = false;
    Phase phase_ = Phase::head;
    std::unique_ptr<Body> body_;
    Cursor cursor_;
    std::size_t outside_ = 0;  // depth around the content
    Bytes pending_;
};

}  // namespace

OwnedMessage decode(bool isDetached, const CMSG_STREAM_INFO* stream) {
    return std::make_unique<Decoder>(isDetached, stream);
}

}  // namespace Corvane::Platform::Messages
