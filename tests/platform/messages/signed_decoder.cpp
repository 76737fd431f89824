// Reading signed messages: their parts, verification, and adding signers and certificates.
#include "content_reader.h"
#include "signed_data.h"
#include "signer.h"

#include <algorithm>
#include <map>

namespace Corvane::Platform::Messages {
namespace {

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
        cursor.enter(Tag::sequence);
        if (oidText(cursor.next().content) != Oid::signedData)
            fail(CRYPT_E_INVALID_MSG_TYPE);
        cursor.enter(Tag::within(0));
        cursor.enter(Tag::sequence);
        cursor.next();  // the version follows from what is there
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
        for (; !cursor.isAtEnd() && !cursor.rest().empty();) {
            const Element element = cursor.next();
            if (element.tag == Tag::within(0))
                take(parts_.certificates, element);
            else if (element.tag == Tag::within(1))
                take(parts_.crls, element);
            else if (element.tag == Tag::set)
                take(parts_.signers, element);
            else
                throw BerError("an unknown part of signed data");
        }
        if (!cursor.isAtEnd())
            throw Truncated();
    }

    static void take(std::vector<Bytes>& all, const Element& set) {
        for (Reader reader(set.content); !reader.atEnd();) {
            const View one = reader.next().whole;
            all.emplace_back(one.begin(), one.end());
        }
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

OwnedMessage decodeSigned(bool isDetached, const CMSG_STREAM_INFO* stream) {
    return std::make_unique<SignedDecoder>(isDetached, stream);
}

}  // namespace Corvane::Platform::Messages
