// Messages that are read, in pieces or at once: what stands before the content, the content as it comes, and
// the rest; and what is asked of them.
#include "asn1/decoders/signed_data.h"
#include "message.h"

#include <list>
#include <map>
#include <optional>
#include <span>

namespace Corvane::Platform::Messages {
namespace {

constexpr std::size_t largestHeader = 10;
constexpr std::uint64_t untilMarker = UINT64_MAX;

std::vector<Bytes> elementsOf(BerReader reader) {
    std::vector<Bytes> all;
    while (!reader.atEnd())
        all.push_back(bytesOf(reader.readWhole()));
    return all;
}

template <class Structure>
Bytes told(const Structure& structure) {
    return bytesOf(viewOfStructure(structure));
}
Bytes number(std::size_t value) {
    return told(static_cast<DWORD>(value));
}

class Decoder : public Message {
public:
    using Message::Message;

    void update(View bytes, bool isFinal) override {
        if (isWhole_)
            return takeContent(bytes);
        append(pending_, bytes);
        rest_ = pending_;
        try {
            if (!isOpen_)
                readHead(isFinal);
        } catch (const Asn1Exception&) {
            // With more of it, it may be one.
            if (isFinal)
                throw;
            return;
        }
        readContent(isFinal);
        if (isFinal)
            readEnd();
        pending_.erase(pending_.begin(), pending_.end() - static_cast<std::ptrdiff_t>(rest_.size()));
    }

    Bytes parameter(DWORD type, DWORD index) override {
        if (!isOpen_)
            fail(CRYPT_E_STREAM_MSG_NOT_READY);
        // What the other kind alone has, and is asked for.
        if (type == (isSigned_ ? CMSG_ENVELOPE_ALGORITHM_PARAM : CMSG_SIGNER_COUNT_PARAM))
            fail(CRYPT_E_INVALID_MSG_TYPE);
        switch (type) {
            case CMSG_TYPE_PARAM:
                return number(isSigned_ ? CMSG_SIGNED : CMSG_ENVELOPED);
            case CMSG_CONTENT_PARAM:
                return collected_;
            case CMSG_ENVELOPE_ALGORITHM_PARAM:
                return algorithm_;  // nobody looks into it
            case CMSG_CMS_RECIPIENT_COUNT_PARAM:
                return number(recipients_.size());
            case CMSG_CMS_RECIPIENT_INFO_PARAM:
                return told(recipient(recipients_.at(index)));
            case CMSG_INNER_CONTENT_TYPE_PARAM:
                return {parts_.contentType.c_str(),
                        parts_.contentType.c_str() + parts_.contentType.size() + 1};
            case CMSG_SIGNER_COUNT_PARAM:
                return number(parts_.signers.size());
            case CMSG_CERT_COUNT_PARAM:
                return number(parts_.certificates.size());
            case CMSG_CRL_COUNT_PARAM:
                return number(0);
            case CMSG_CERT_PARAM:
                return parts_.certificates.at(index);
            case CMSG_ENCODED_SIGNER:
                return parts_.signers.at(index);
            case CMSG_ENCODED_MESSAGE:
                return parts_.layout(hasContent_).whole(collected_, parts_.after());
            case CMSG_COMPUTED_HASH_PARAM:
                return contentDigest(signer(index).HashAlgorithm.pszObjId);
            case CMSG_SIGNER_CERT_INFO_PARAM:
                return told(nameOf(signer(index).SignerId));
            case CMSG_SIGNER_CERT_ID_PARAM:
                return told(signer(index).SignerId);
            default:  // CMSG_SIGNER_INFO_PARAM
                return told(signerInfoOf(signer(index)));
        }
    }

    void control(DWORD type, const void* argument) override {
        if (type == CMSG_CTRL_VERIFY_SIGNATURE_EX) {
            const auto& how = *static_cast<const CMSG_CTRL_VERIFY_SIGNATURE_EX_PARA*>(argument);
            verify(how.dwSignerIndex, *static_cast<const CERT_CONTEXT*>(how.pvSigner)->pCertInfo);
        } else if (type == CMSG_CTRL_VERIFY_SIGNATURE) {
            verifyAny(*static_cast<const CERT_INFO*>(argument));
        } else if (type == CMSG_CTRL_ADD_SIGNER) {
            const auto& signer = *static_cast<const CMSG_SIGNER_ENCODE_INFO*>(argument);
            parts_.signers.push_back(signerInfo(signer, contentDigest(signer.HashAlgorithm.pszObjId)));
            parts_.addDigest(signer.HashAlgorithm.pszObjId);
        } else if (type == CMSG_CTRL_ADD_CERT) {
            parts_.certificates.push_back(bytesOf(viewOf(*static_cast<const CRYPT_DATA_BLOB*>(argument))));
        } else {
            decrypt(*static_cast<const CMSG_CTRL_KEY_TRANS_DECRYPT_PARA*>(argument));
        }
    }

private:
    // An element around the content, or around a piece of it.
    struct Level {
        std::uint64_t end;
        bool isConstructed;
    };

    // Up to the content.
    void readHead(bool isFinal) {
        BerReader outer = Reader(rest_).enterBeginning(Tag::sequence);
        const std::string type = outer.readOid();
        isSigned_ = type == Oid::signedData;
        if (!isSigned_ && type != Oid::envelopedData)
            fail(CRYPT_E_INVALID_MSG_TYPE);
        BerReader fields = outer.enterBeginning(Tag::context(0)).enterBeginning(Tag::sequence);
        fields.skip();  // the version, which says no more than what is there
        const BerReader set = fields.enter(Tag::set);
        BerReader inner = fields.enterBeginning(Tag::sequence);
        View last = inner.readWhole();
        const std::string contentType = Reader(last).readOid();
        if (!isSigned_)
            last = inner.readWhole();
        const View behind = rest_.subspan(static_cast<std::size_t>(last.data() + last.size() - rest_.data()));
        if (behind.size() < largestHeader && !isFinal)
            throw Asn1Exception("not whole");
        rest_ = behind;
        isOpen_ = true;
        hasContent_ = inner.isNext(Tag::context(0)) || inner.isNext(Tag::contextPrimitive(0));
        if (hasContent_)
            enter();
        if (isSigned_) {
            parts_.contentType = contentType;
            for (const Bytes& digest : elementsOf(set)) {
                const std::string hash = Reader(digest).enter(Tag::sequence).readOid();
                parts_.addDigest(hash);
                // Signers with an algorithm that is not known cannot be verified, which is told then.
                succeeds([&] { digests_.try_emplace(hash, hash); });
            }
        } else {
            algorithm_ = bytesOf(last);
            recipients_ = elementsOf(set);
        }
    }

    View take(std::uint64_t size) {
        if (size > rest_.size())
            throw Asn1Exception("the message ends too early");
        const View taken = rest_.first(static_cast<std::size_t>(size));
        rest_ = rest_.subspan(taken.size());
        position_ += size;
        return taken;
    }

    void enter() {
        const std::uint8_t tag = take(1)[0];
        std::uint64_t length = take(1)[0];
        const bool isIndefinite = length == 0x80;
        if (length > 0x80) {
            const View digits = take(length & 0x7F);
            length = 0;
            for (const std::uint8_t digit : digits)
                length = length << 8 | digit;
        }
        levels_.push_back({isIndefinite ? untilMarker : position_ + length, (tag & Tag::constructed) != 0});
    }

    // Headers, ends, and what is there of the pieces, until more must come or the content has ended.
    void readContent(bool isFinal) {
        while (!levels_.empty()) {
            const Level level = levels_.back();
            if (!level.isConstructed && position_ < level.end && !rest_.empty()) {
                takeContent(take(std::min<std::uint64_t>(level.end - position_, rest_.size())));
            } else if (position_ >= level.end) {
                levels_.pop_back();
            } else if (!level.isConstructed || (rest_.size() < largestHeader && !isFinal)) {
                return;
            } else if (level.end == untilMarker && !rest_.empty() && rest_[0] == 0) {
                take(endMarkerSize);
                levels_.pop_back();
            } else {
                enter();
            }
        }
    }

    // In a stream nothing stays in memory but the running digests, or what came before the key.
    void takeContent(View bytes) {
        for (auto& [hash, digest] : digests_)
            digest.add(bytes);
        if (cipher_)
            put(cipher_->process(bytes, false));
        else if (!isSigned_)
            append(queue_, bytes);
        else if (!isStream() || !isWhole_)
            put(bytes);
    }

    void readEnd() {
        if (!levels_.empty())
            throw Asn1Exception("the content does not end");
        while (!rest_.empty() && rest_[0] == 0)
            take(endMarkerSize);
        if (isSigned_) {
            Reader reader(rest_);
            if (reader.isNext(Tag::context(0)))
                parts_.certificates = elementsOf(reader.enter(Tag::context(0)));
            parts_.signers = elementsOf(reader.enter(Tag::set));
        }
        rest_ = {};
        isWhole_ = true;
        if (cipher_)
            decryptQueue();
    }

    // What is looked at; its name is asked for by itself.
    static CMSG_SIGNER_INFO signerInfoOf(const CMSG_CMS_SIGNER_INFO& signer) {
        CMSG_SIGNER_INFO info{};
        info.HashAlgorithm = signer.HashAlgorithm;
        info.HashEncryptionAlgorithm = signer.HashEncryptionAlgorithm;
        info.EncryptedHash = signer.EncryptedHash;
        info.AuthAttrs = signer.AuthAttrs;
        return info;
    }

    CRYPT_DATA_BLOB kept(Bytes bytes) {
        Bytes& place = kept_.emplace_back(std::move(bytes));
        return {lengthOf(place), place.data()};
    }

    const CMSG_CMS_SIGNER_INFO& signer(DWORD index) {
        const Bytes& der = parts_.signers.at(index);
        Bytes& decoded = signers_[index];
        if (decoded.empty())
            decoded = filled([&](BYTE* buffer, DWORD* size) {
                return ::CryptDecodeObject(encodings, CMS_SIGNER_INFO, der.data(), lengthOf(der), 0, buffer,
                                           size);
            });
        return *reinterpret_cast<const CMSG_CMS_SIGNER_INFO*>(decoded.data());
    }

    // Issuer and serial number alone; for a key identifier the name that stands for it.
    CERT_INFO nameOf(const CERT_ID& id) {
        CERT_INFO info{};
        if (id.dwIdChoice == CERT_ID_KEY_IDENTIFIER) {
            const Bytes attribute =
                tlv(Tag::sequence, oid(Oid::keyIdentifierName), tlv(Tag::octetString, viewOf(id.KeyId)));
            info.Issuer = kept(tlv(Tag::sequence, tlv(Tag::set, attribute)));
            info.SerialNumber = kept(Bytes(1));
        } else {
            info.Issuer = id.IssuerSerialNumber.Issuer;
            info.SerialNumber = id.IssuerSerialNumber.SerialNumber;
        }
        return info;
    }

    // The one that was computed as the content came, or of content that is in memory.
    Bytes contentDigest(const std::string& hash) {
        if (const auto found = digests_.find(hash); found != digests_.end())
            return found->second.value();
        return isStream() ? (fail(CRYPT_E_UNKNOWN_ALGO), Bytes()) : digestOf(hash, collected_);
    }

    static Bytes digestOf(const std::string& hash, View bytes) {
        Digest digest(hash);
        digest.add(bytes);
        return digest.value();
    }

    // Fails with CRYPT_E_HASH_VALUE or NTE_BAD_SIGNATURE.
    void verify(DWORD index, const CERT_INFO& certificate) {
        const CMSG_CMS_SIGNER_INFO& one = signer(index);
        const std::string hash = one.HashAlgorithm.pszObjId;
        const View signature = viewOf(one.EncryptedHash);
        Bytes digest = contentDigest(hash);
        const Bytes attributes = asn1::signedAttributes(parts_.signers.at(index));
        if (!attributes.empty()) {
            if (!std::ranges::equal(attribute(one, Oid::messageDigest).read(Tag::octetString), digest))
                fail(CRYPT_E_HASH_VALUE);
            if (attribute(one, Oid::contentType).readOid() != parts_.contentType)
                fail(CRYPT_E_UNEXPECTED_MSG_TYPE);
            digest = digestOf(hash, attributes);
        }
        verifyDigest(certificate.SubjectPublicKeyInfo, hash, digest, signature);
    }

    // The one value.
    static Reader attribute(const CMSG_CMS_SIGNER_INFO& signer, std::string_view type) {
        for (const CRYPT_ATTRIBUTE& one : std::span(signer.AuthAttrs.rgAttr, signer.AuthAttrs.cAttr)) {
            if (type == one.pszObjId && one.cValue == 1)
                return Reader(viewOf(one.rgValue[0]));
        }
        fail(CRYPT_E_AUTH_ATTR_MISSING);
    }

    // Which signer is meant nobody tells: one whose signature is good for that certificate.
    void verifyAny(const CERT_INFO& certificate) {
        for (DWORD index = 0; !succeeds([&] { verify(index, certificate); }); ++index)
            must(index + 1 < parts_.signers.size());
    }

    // Of other kinds than key transport the kind alone.
    CMSG_CMS_RECIPIENT_INFO recipient(const Bytes& encoded) {
        CMSG_CMS_RECIPIENT_INFO info{CMSG_MAIL_LIST_RECIPIENT, {}};
        if (encoded[0] != Tag::sequence)
            return info;
        BerReader reader = Reader(encoded).enter(Tag::sequence);
        reader.skip();
        CMSG_KEY_TRANS_RECIPIENT_INFO transport{};
        CERT_ID& id = transport.RecipientId;
        if (reader.isNext(Tag::sequence)) {
            BerReader name = reader.enter(Tag::sequence);
            id.dwIdChoice = CERT_ID_ISSUER_SERIAL_NUMBER;
            id.IssuerSerialNumber.Issuer = kept(bytesOf(name.readWhole()));
            id.IssuerSerialNumber.SerialNumber = kept(reversed(name.read(Tag::integer)));
        } else {
            id.dwIdChoice = CERT_ID_KEY_IDENTIFIER;
            id.KeyId = kept(bytesOf(reader.read(Tag::contextPrimitive(0))));
        }
        info.dwRecipientChoice = CMSG_KEY_TRANS_RECIPIENT;
        info.pKeyTrans = reinterpret_cast<CMSG_KEY_TRANS_RECIPIENT_INFO*>(kept(told(transport)).pbData);
        return info;
    }

    void decrypt(const CMSG_CTRL_KEY_TRANS_DECRYPT_PARA& how) {
        BerReader reader = Reader(recipients_.at(how.dwRecipientIndex)).enter(Tag::sequence);
        reader.skip();
        reader.skip();
        reader.skip();  // the algorithm, which the key tells
        cipher_.emplace(how.hCryptProv, how.dwKeySpec, Reader(Reader(algorithm_).read(Tag::sequence)),
                        reader.read(Tag::octetString));
        decryptQueue();
    }
    void decryptQueue() { put(cipher_->process(std::exchange(queue_, {}), isWhole_)); }

    bool isOpen_ = false, isSigned_ = false, hasContent_ = false, isWhole_ = false;
    Bytes pending_;
    View rest_;                   // of it
    std::uint64_t position_ = 0;  // from the beginning of the content on
    std::vector<Level> levels_;
    SignedParts parts_;
    std::map<std::string, Digest> digests_;
    std::map<DWORD, Bytes> signers_;  // as the system decodes them
    std::list<Bytes> kept_;           // what structures point to
    Bytes algorithm_;
    std::vector<Bytes> recipients_;
    Bytes queue_;
    std::optional<ContentCipher> cipher_;
};

}  // namespace

OwnedMessage decode(const CMSG_STREAM_INFO* stream) {
    return std::make_unique<Decoder>(stream);
}

}  // namespace Corvane::Platform::Messages
