// Enveloped messages: made for recipients, and read and decrypted.
#include "content_key.h"
#include "content_reader.h"
#include "layout.h"

#include <algorithm>

namespace Corvane::Platform::Messages {
namespace {

class EnvelopedEncoder : public Message {
public:
    EnvelopedEncoder(const CMSG_ENVELOPED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream)
        : sink_(stream), key_(info), cipher_(key_.take(), true) {}

    void update(View bytes, bool isFinal) override {
        if (!sink_.isStream() && !isFinal)
            fail(CRYPT_E_MSG_ERROR);
        if (isFinished_)
            fail(CRYPT_E_MSG_ERROR);
        isFinished_ = isFinal;
        if (!layout_)
            begin(sink_.isStream() ? sink_.announced() : sizeOf(bytes));
        layout_->content(cipher_.process(bytes, isFinal));
        if (isFinal)
            layout_->end({});
    }

    void parameter(DWORD type, DWORD, Answer answer) override { sink_.give(type, answer); }

private:
    void begin(DWORD size) {
        Bytes recipients;
        for (const Recipient& one : key_.recipients())
            append(recipients, tlv(Tag::sequence, integer(0), one.identity.der(), one.keyEncryption.der(),
                                   tlv(Tag::octetString, one.encryptedKey)));
        Bytes head = integer(0);
        append(head, tlv(Tag::set, recipients));
        Bytes inner = oid(Oid::data);
        append(inner, key_.algorithm().der());
        layout_.emplace(Layout::Parts{oid(Oid::envelopedData), head, inner, true}, sink_);
        if (sink_.isStream() && size == CMSG_INDEFINITE_LENGTH)
            layout_->beginIndefinite();
        else
            layout_->beginDefinite(cipher_.encryptedSize(size), 0);
    }

    Sink sink_;
    NewContentKey key_;
    ContentCipher cipher_;
    std::optional<Layout> layout_;
    bool isFinished_ = false;
};

class EnvelopedDecoder : public Message, private ContentReader {
public:
    explicit EnvelopedDecoder(const CMSG_STREAM_INFO* stream) : sink_(stream) {}

    void update(View bytes, bool isFinal) override {
        if (isWhole())
            fail(CRYPT_E_MSG_ERROR);
        read(bytes, isFinal);
        if (isWhole() && cipher_)
            decryptQueue();
    }

    void parameter(DWORD type, DWORD index, Answer answer) override {
        if (!isHeadRead())
            fail(sink_.isStream() ? CRYPT_E_STREAM_MSG_NOT_READY : CRYPT_E_INVALID_MSG_TYPE);
        switch (type) {
            case CMSG_TYPE_PARAM:
                return answer.give(DWORD{CMSG_ENVELOPED});
            case CMSG_CONTENT_PARAM:
                return answer.give(cipher_ ? View(sink_.collected()) : View(queue_));
            case CMSG_ENVELOPE_ALGORITHM_PARAM:
                return answer.build([&](Flat& flat) {
                    auto* const algorithm = flat.make<CRYPT_ALGORITHM_IDENTIFIER>();
                    *algorithm = flat.algorithm(algorithm_);
                });
            case CMSG_CMS_RECIPIENT_COUNT_PARAM:
                return answer.give(static_cast<DWORD>(recipients_.size()));
            case CMSG_CMS_RECIPIENT_INFO_PARAM:
                return cmsRecipient(index, answer);
            default:
                fail(CRYPT_E_INVALID_MSG_TYPE);
        }
    }

    void control(DWORD, DWORD type, const void* argument) override {
        if (!isHeadRead())
            fail(sink_.isStream() ? CRYPT_E_STREAM_MSG_NOT_READY : CRYPT_E_INVALID_MSG_TYPE);
        if (type != CMSG_CTRL_KEY_TRANS_DECRYPT)
            fail(CRYPT_E_CONTROL_TYPE);
        if (cipher_)
            fail(CRYPT_E_ALREADY_DECRYPTED);
        const auto& how = *static_cast<const CMSG_CTRL_KEY_TRANS_DECRYPT_PARA*>(argument);
        const Recipient one = recipient(all(how.dwRecipientIndex));
        cipher_.emplace(receiveContentKey(algorithm_, one, how.hCryptProv, how.dwKeySpec), false);
        decryptQueue();
    }

private:
    static bool isKeyTransport(View recipient) { return recipient[0] == Tag::sequence; }

    const Bytes& all(DWORD index) const {
        return index < recipients_.size() ? recipients_[index]
                                          : (fail(CRYPT_E_INVALID_INDEX), recipients_[0]);
    }

    static Recipient recipient(View encoded) {
        if (!isKeyTransport(encoded))
            fail(CRYPT_E_INVALID_INDEX);
        Reader reader = Reader(encoded).enter(Tag::sequence);
        reader.next(Tag::integer);
        Recipient result;
        result.identity = Identity::read(reader.next());
        result.keyEncryption = AlgorithmId::read(reader.enter(Tag::sequence));
        result.encryptedKey = octets(reader.next());
        return result;
    }

    void cmsRecipient(DWORD index, Answer& answer) const {
        const Bytes& encoded = all(index);
        answer.build([&](Flat& flat) {
            auto* const info = flat.make<CMSG_CMS_RECIPIENT_INFO>();
            if (!isKeyTransport(encoded)) {
                info->dwRecipientChoice =
                    encoded[0] == Tag::within(1) ? CMSG_KEY_AGREE_RECIPIENT : CMSG_MAIL_LIST_RECIPIENT;
                info->pKeyAgree = flat.make<CMSG_KEY_AGREE_RECIPIENT_INFO>();
                return;
            }
            const Recipient one = recipient(encoded);
            auto* const transport = flat.make<CMSG_KEY_TRANS_RECIPIENT_INFO>();
            transport->dwVersion =
                one.identity.isKeyIdentifier() ? CMSG_ENVELOPED_RECIPIENT_V2 : CMSG_ENVELOPED_RECIPIENT_V0;
            transport->RecipientId = one.identity.certificateId(flat);
            transport->KeyEncryptionAlgorithm = flat.algorithm(one.keyEncryption);
            transport->EncryptedKey = flat.blob(one.encryptedKey);
            info->dwRecipientChoice = CMSG_KEY_TRANS_RECIPIENT;
            info->pKeyTrans = transport;
        });
    }

    bool readHead(Cursor& cursor) override {
        enterMessage(cursor, Oid::envelopedData);
        if (cursor.isNext(Tag::within(0)))
            cursor.next();
        std::vector<Bytes> recipients;
        take(recipients, cursor.next().content);
        cursor.enter(Tag::sequence);
        cursor.next();  // the content's type
        algorithm_ = AlgorithmId::read(Reader(cursor.next().content));
        recipients_ = std::move(recipients);
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
        while (!cursor.isAtEnd())
            cursor.next();
    }

    void decryptQueue() {
        sink_.put(cipher_->process(queue_, isWhole()), isWhole());
        queue_ = {};
    }

    bool hasContent_ = false;
    Sink sink_;
    AlgorithmId algorithm_;
    std::vector<Bytes> recipients_;
    Bytes queue_;  // what came before the key
    std::optional<ContentCipher> cipher_;
};

}  // namespace

OwnedMessage encodeEnveloped(const CMSG_ENVELOPED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream) {
    return std::make_unique<EnvelopedEncoder>(info, stream);
}

OwnedMessage decodeEnveloped(const CMSG_STREAM_INFO* stream) {
    return std::make_unique<EnvelopedDecoder>(stream);
}

}  // namespace Corvane::Platform::Messages
