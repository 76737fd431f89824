// Making signed messages.
#include "signed_data.h"
#include "signer.h"

#include <map>

namespace Corvane::Platform::Messages {
namespace {

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

}  // namespace

OwnedMessage encodeSigned(DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info, const CMSG_STREAM_INFO* stream) {
    return std::make_unique<SignedEncoder>(flags, info, stream);
}

std::uint64_t signedSize(DWORD flags, const CMSG_SIGNED_ENCODE_INFO& info, DWORD contentSize) {
    return SignedEncoder(flags, info, nullptr).sizeWith(contentSize);
}

}  // namespace Corvane::Platform::Messages
