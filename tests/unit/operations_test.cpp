// Operations on messages while the system's calls fail one after the other. The message functions and the
// GOST provider are those of tests/platform; the keys are made here.
#include "api_faults.h"
#include "core/json.h"
#include "core/utf8.h"
#include "crypto/api/encoding.h"
#include "crypto/message/inspect.h"
#include "crypto/message/provider_choice.h"
#include "crypto/provider/provider_list.h"

#include <gmock/gmock.h>

#include <optional>

using namespace Corvane;
using namespace Corvane::Test;
using Corvane::Stream::MemoryStream;

namespace {

using Provider = CryptoApiProvider;
using BinaryStream = Stream::IBinaryStream;
const SharedProgress none;

std::string told(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

// Certificates as a text that can be compared.
std::string told(const Certificates& certificates) {
    std::string all = std::to_string(certificates.size());
    for (const SharedCertificate& one : certificates)
        all += told(one->getContent());
    return all;
}

class Operations : public testing::Test {
protected:
    static void SetUpTestSuite() {
        ASSERT_TRUE(::LoadLibraryW(CORVANE_PLATFORM L"/msgstandin.dll")) << ::GetLastError();
    }

    Operations() {
        rsa_.makeKey();
        gost_.makeKey();
        certificate_ = add(rsa_.selfSigned('A'));
        other_ = add(rsa_.selfSigned('B'));
        gostCertificate_ = withGostKey(gost_);
        detached_ = signedBy(false);
        attached_ = signedBy(true);
        enveloped_ = provider_.encrypt(data_, {certificate_});
    }

    static CertificateStoreHandle memoryStore() {
        return CertificateStoreHandle(::CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr));
    }

    // Some certificate for such keys.
    SharedCertificate withGostKey(const KeyContainer& key) const {
        const Certificate foreign = pkiCertificate("gost2001");
        CRYPT_KEY_PROV_INFO info = key.place();
        must(::CertSetCertificateContextProperty(foreign.context(), CERT_KEY_PROV_INFO_PROP_ID, 0, &info));
        return add(CertificateContext(::CertDuplicateCertificateContext(foreign.context())));
    }

    SharedCertificate add(const CertificateContext& certificate) const {
        CertificateContext added;
        must(::CertAddCertificateContextToStore(store_.get(), certificate.get(), CERT_STORE_ADD_ALWAYS,
                                                added.put()));
        return std::make_shared<Certificate>(std::move(added));
    }

    // By two signers.
    Bytes signedBy(bool attached) const {
        return provider_.addSignerToSignature(provider_.sign(data_, *certificate_, attached, false),
                                              attached ? nullptr : &data_, *certificate_, false);
    }

    // What an operation writes behind what was there.
    template <class... Arguments>
    std::string written(void (Provider::*operation)(BinaryStream&, BinaryStream&, Arguments...) const,
                        const Bytes& input, const std::type_identity_t<Arguments>&... arguments) {
        output_.emplace();
        output_->write(bytesOf(before));
        (provider_.*operation)(from(input), *output_, arguments...);
        return told(contentOf(*output_)).substr(before.size());
    }
    // A message with signed attributes and other content than was signed.
    static Bytes withOtherContent() {
        Bytes message = readTestData("pki/attached-attributes.p7s");
        const Bytes document = readTestData("pki/document.bin");
        *std::search(message.begin(), message.end(), document.begin(), document.end()) ^= 1;
        return message;
    }
    SourceStream& from(const Bytes& bytes) { return input_.emplace(bytes, 300); }

    static constexpr std::string_view before = "before";

    const CertificateStoreHandle store_ = memoryStore();
    const CertificateStoreHandle empty_ = memoryStore();
    HCERTSTORE personal_ = store_.get();  // in the place of the user's "My"
    HCERTSTORE machines_ = empty_.get();  // and of the machine's
    std::vector<DWORD> opened_;           // of the system's stores
    decltype(&::CertOpenStore) openStore_ = ImportPatch::behind(&::CertOpenStore);
    const Replaced<HCERTSTORE, LPCSTR, DWORD, HCRYPTPROV_LEGACY, DWORD, const void*> opening_{
        &::CertOpenStore, [this](LPCSTR provider, DWORD encoding, auto context, DWORD flags, const void* of) {
            if (provider != CERT_STORE_PROV_SYSTEM_W)
                return openStore_(provider, encoding, context, flags, of);
            opened_.push_back(flags & CERT_SYSTEM_STORE_LOCATION_MASK);
            return ::CertDuplicateStore(opened_.back() == CERT_SYSTEM_STORE_CURRENT_USER ? personal_
                                                                                         : machines_);
        }};
    KeyContainer rsa_{rsaRecord(), L"RSA"};
    KeyContainer gost_{gostRecord(), L"GOST"};
    const Provider provider_{rsaRecord()};
    SharedCertificate certificate_;
    SharedCertificate other_;  // of the same key
    SharedCertificate gostCertificate_;
    const Bytes data_ = sampleBytes(100);
    Bytes detached_;
    Bytes attached_;
    Bytes enveloped_;
    std::optional<SourceStream> input_;
    std::optional<MemoryStream> output_;
};

TEST_F(Operations, EveryCallFailsOnce) {
    const Certificates both{certificate_, other_};
    const Certificates own{certificate_};
    // So that the signature over the attributes is asked for by itself.
    const Bytes inspected = withOtherContent();
    const auto& p = provider_;
    const auto size = [](const auto& bytes) { return std::to_string(bytes.size()); };
    const std::vector<Work> works{
        {"sign", [&] { return size(p.sign(data_, *certificate_, true, true)); }},
        {"signed stream",
         [&] { return size(written(&Provider::sign, data_, *certificate_, true, true, none)); }},
        {"raw", [&] { return size(p.rawSign(data_, *gostCertificate_)); }},
        {"add", [&] { return size(p.addSignerToSignature(detached_, &data_, *other_, true)); }},
        {"encrypt", [&] { return size(p.encrypt(data_, both)); }},
        {"encrypt a stream", [&] { return size(written(&Provider::encrypt, data_, both, none)); }},
        {"chain", [&] { return std::to_string(certificate_->verify(0)); }},
        {"providers", [] { return toUtf8(Crypto::getCryptoProvidersInfo()); }},
        {"provider", [] { return toUtf8(Crypto::findProvider(MS_ENH_RSA_AES_PROV_W, PROV_RSA_AES).name); }},
        {"verify", [&] { return told(p.verifyMessageSignature(detached_, &data_, own)); }},
        {"verify attached", [&] { return told(p.verifyMessageSignature(attached_, nullptr, {})); }},
        {"verify data of a stream",
         [&] { return told(p.verifyMessageSignature(detached_, from(data_), own, none)); }},
        {"verify a stream", [&] { return told(p.verifyMessageSignature(from(attached_), {}, none)); }},
        {"certificates", [&] { return told(p.getCertificatesFromSignature(attached_)); }},
        {"certificates of a stream",
         [&] { return told(p.extractCertificatesFromSignature(from(attached_), none)); }},
        {"content", [&] { return told(p.getContentFromSignature(attached_)); }},
        {"content of a stream",
         [&] { return written(&Provider::extractContentFromSignature, attached_, none); }},
        {"decrypt", [&] { return told(p.decrypt(enveloped_)); }},
        {"decrypt a stream", [&] { return written(&Provider::decrypt, enveloped_, none); }},
        {"inspect", [&] { return toUtf8(Crypto::inspectSignature(inspected, nullptr, {}, 0)); }},
    };
    failEachCall(works, [&](const Work& work, bool isAnswer) {
        const std::string left = output_ ? told(contentOf(*output_)) : std::string(before);
        output_.reset();
        EXPECT_TRUE(isAnswer || left == before || (work.name == "signed stream" && left.starts_with(before)));
    });
}

TEST_F(Operations, ContentComesInBlocksOfOneByteLessThanAMebibyte) {
    std::vector<std::pair<DWORD, BOOL>> updates;
    const Replaced patch(&::CryptMsgUpdate, [&](HCRYPTMSG, const BYTE*, DWORD size, BOOL last) {
        updates.emplace_back(size, last);
        return TRUE;
    });
    SourceStream input(Bytes(1048575));
    MemoryStream output;
    provider_.sign(input, output, *certificate_, true, false, none);
    EXPECT_EQ(updates, (decltype(updates){{1048575, FALSE}, {0, TRUE}}));
}

// Says that it has another size and position than it has.
struct LyingStream : SourceStream {
    LyingStream(Stream::State said, const Bytes& bytes) : SourceStream(bytes), said_(said) {}
    Stream::State state() const override { return said_; }
    Stream::State said_;
};

TEST_F(Operations, SizesAreAnnouncedWhereTheyFitAndKept) {
    MemoryStream output;
    const auto work = [&](bool signs, Stream::State said, const Bytes& bytes) {
        LyingStream input(said, bytes);
        return errorCode([&] {
            signs ? provider_.sign(input, output, *certificate_, true, false, none)
                  : provider_.encrypt(input, output, {certificate_}, none);
        });
    };
    for (const bool signs : {true, false})
        EXPECT_EQ(work(signs, {0, 99}, data_), E_READ_OR_WRONG_FILE_SIZE.code) << "it grew";
    DWORD announced = 0;
    const Replaced patch(&::CryptMsgOpenToEncode,
                         [&](auto, auto, auto, auto, auto, PCMSG_STREAM_INFO stream) {
                             announced = stream->cbContent;
                             return nullptr;
                         });
    constexpr DWORD unknown = CMSG_INDEFINITE_LENGTH;
    const std::tuple<Stream::State, DWORD, DWORD> rows[] = {
        {{30, 100}, 70, 70},
        // With padding and recipients the message would be of 4 GiB.
        {{0, 0xFFFFFFFE}, 0xFFFFFFFE, unknown},
        {{0, 0xFFFFFFFF}, unknown, unknown},
        {{6, 0x100000005}, unknown, unknown},
    };
    for (const auto& [state, whenSigned, whenEncrypted] : rows) {
        for (const bool signs : {true, false}) {
            EXPECT_NE(work(signs, state, {}), 0u);
            EXPECT_EQ(announced, signs ? whenSigned : whenEncrypted) << state.size;
        }
    }
}

TEST_F(Operations, KeysForSignaturesAlone) {
    KeyContainer rsa(rsaRecord(), L"RSA, signatures");
    KeyContainer gost(gostRecord(), L"GOST, signatures");
    rsa.makeKey(AT_SIGNATURE);
    gost.makeKey(AT_SIGNATURE);
    const SharedCertificate signer = add(rsa.selfSigned('S'));
    DWORD keyFlags = 0;
    const auto acquire = ImportPatch::behind(&::CryptAcquireCertificatePrivateKey);
    const Replaced patch(&::CryptAcquireCertificatePrivateKey, [&](auto context, DWORD flags, auto... rest) {
        keyFlags = flags;
        return acquire(context, flags, rest...);
    });
    const Bytes once = provider_.sign(data_, *signer, true, false);
    // Asked for once and kept, since the message is made in two calls.
    EXPECT_EQ(keyFlags & CRYPT_ACQUIRE_CACHE_FLAG, CRYPT_ACQUIRE_CACHE_FLAG);
    const auto isKept = [&] {
        DWORD size = 0;
        return ::CertGetCertificateContextProperty(signer->context(), CERT_KEY_CONTEXT_PROP_ID, nullptr,
                                                   &size) != FALSE;
    };
    EXPECT_TRUE(isKept());
    {
        // As when a token is pulled out between two signatures, of which the second begins within the first.
        const auto sign = [&] { provider_.sign(data_, *signer, true, false); };
        int under = 0;
        const Replaced failing(&::CryptSignMessage, [&](auto...) {
            if (++under == 1) {
                EXPECT_EQ(failureOf(sign), Failure(E_CRYPTO_SIGN.code, denied));
                EXPECT_TRUE(isKept()) << "freed while somebody signs with it";
            }
            return ::SetLastError(denied), FALSE;
        });
        EXPECT_EQ(failureOf(sign), Failure(E_CRYPTO_SIGN.code, denied));
    }
    EXPECT_FALSE(isKept());
    const std::string streamed = written(&Provider::sign, data_, *signer, true, false, none);
    EXPECT_EQ(keyFlags, 0u);
    const Bytes twice = provider_.addSignerToSignature(bytesOf(streamed), nullptr, *signer, false);
    EXPECT_EQ(told(provider_.verifyMessageSignature(once, nullptr, {})), told(Certificates{signer}));
    EXPECT_EQ(told(provider_.verifyMessageSignature(twice, nullptr, {})), told({signer, signer}));
    EXPECT_EQ(provider_.rawSign(data_, *withGostKey(gost)).size(), 64u);
}

TEST_F(Operations, CertificatesAreTheOnesThatAreMeant) {
    // Of the same key, but not what the message names.
    EXPECT_EQ(told(provider_.verifyMessageSignature(attached_, nullptr, {other_})),
              told({certificate_, certificate_}));

    const CertificateStoreHandle second = memoryStore();
    must(::CertAddCertificateContextToStore(second.get(), certificate_->context(), CERT_STORE_ADD_ALWAYS,
                                            nullptr));
    personal_ = second.get();
    const Certificates both{other_, certificate_};
    for (const Bytes& message :
         {provider_.encrypt(data_, both), bytesOf(written(&Provider::encrypt, data_, both, none))})
        EXPECT_EQ(provider_.decrypt(message), data_);

    const CertificateStoreHandle bare = memoryStore();
    const Bytes der = certificate_->getContent();
    must(::CertAddEncodedCertificateToStore(bare.get(), X509_ASN_ENCODING, der.data(),
                                            static_cast<DWORD>(der.size()), CERT_STORE_ADD_ALWAYS, nullptr));
    personal_ = bare.get();
    EXPECT_THAT([&] { provider_.decrypt(enveloped_); },
                testing::ThrowsMessage<std::runtime_error>("certificate not found"));
    machines_ = store_.get();
    opened_.clear();
    EXPECT_EQ(provider_.decrypt(enveloped_), data_);
    EXPECT_EQ(opened_, (std::vector<DWORD>{CERT_SYSTEM_STORE_CURRENT_USER, CERT_SYSTEM_STORE_LOCAL_MACHINE}));
}

TEST_F(Operations, AFailedDecryptionIsToldAsOneAndLeavesNothing) {
    // Of full ciphers' blocks, and more than one block of a stream; the padding, sixteen times 16 (RFC 5652
    // 6.3), ends with 0x90 when that bit of the block before changes.
    Bytes message = provider_.encrypt(sampleBytes(0x100000 + 64), {certificate_});
    message[message.size() - 17] ^= 0x80;
    const Failure expected{E_CRYPTO_DECRYPT.code, static_cast<DWORD>(NTE_BAD_DATA)};
    EXPECT_EQ(failureOf([&] { provider_.decrypt(message); }), expected);
    EXPECT_EQ(failureOf([&] { written(&Provider::decrypt, message, none); }), expected);
    EXPECT_EQ(told(contentOf(*output_)), before);
    // The recipient behind the version and the set's head (RFC 5652 6.1) becomes one of another kind,
    // KEKRecipientInfo.
    const Bytes head{0x02, 0x01, 0x00, 0x31};
    const auto length = std::search(message.begin(), message.end(), head.begin(), head.end()) + 4;
    const auto recipient = length + 1 + (*length < 0x80 ? 0 : *length & 0x7F);
    ASSERT_EQ(*recipient, 0x30);
    *recipient = 0xA2;
    EXPECT_THROW(provider_.decrypt(message), std::runtime_error) << "certificate not found";
}

// The system is told which of the recipient's keys is meant, and whose key came with the message. What it
// does with them is done by the transport here, of which the message really is.
TEST_F(Operations, ARecipientByKeyAgreementIsFoundAmongOthers) {
    const auto ask = ImportPatch::behind(&::CryptMsgGetParam);
    const auto control = ImportPatch::behind(&::CryptMsgControl);
    std::vector<std::max_align_t> room(1000);
    auto& real = *reinterpret_cast<CMSG_CMS_RECIPIENT_INFO*>(room.data());
    CMSG_RECIPIENT_ENCRYPTED_KEY_INFO stranger{};
    CMSG_RECIPIENT_ENCRYPTED_KEY_INFO own{};
    CMSG_RECIPIENT_ENCRYPTED_KEY_INFO* keys[] = {&stranger, &own};
    CMSG_KEY_AGREE_RECIPIENT_INFO agreement{};
    BYTE nobody[] = {1};
    stranger.RecipientId.dwIdChoice = CERT_ID_KEY_IDENTIFIER;
    stranger.RecipientId.KeyId = {1, nobody};
    agreement.dwOriginatorChoice = CMSG_KEY_AGREE_ORIGINATOR_PUBLIC_KEY;
    agreement.OriginatorPublicKeyInfo.PublicKey = {1, nobody, 0};
    agreement.rgpRecipientEncryptedKeys = keys;
    const Replaced asking(&::CryptMsgGetParam,
                          [&](auto message, DWORD type, auto index, void* data, DWORD* size) {
                              if (type != CMSG_CMS_RECIPIENT_INFO_PARAM || !data)
                                  return ask(message, type, index, data, size);
                              auto whole = static_cast<DWORD>(room.size() * sizeof room[0]);
                              must(ask(message, type, index, &real, &whole));
                              own.RecipientId = real.pKeyTrans->RecipientId;
                              auto& told = *static_cast<CMSG_CMS_RECIPIENT_INFO*>(data);
                              told.dwRecipientChoice = CMSG_KEY_AGREE_RECIPIENT;
                              told.pKeyAgree = &agreement;
                              return TRUE;
                          });
    const Replaced controlling(
        &::CryptMsgControl, [&](auto message, DWORD flags, DWORD type, const void* how) {
            if (type != CMSG_CTRL_KEY_AGREE_DECRYPT)
                return control(message, flags, type, how);
            const auto& agreed = *static_cast<const CMSG_CTRL_KEY_AGREE_DECRYPT_PARA*>(how);
            EXPECT_EQ(agreed.pKeyAgree, &agreement);
            EXPECT_EQ(agreed.dwRecipientEncryptedKeyIndex, 1u);
            EXPECT_EQ(agreed.OriginatorPublicKey.pbData, nobody);
            CMSG_CTRL_KEY_TRANS_DECRYPT_PARA transport{};
            transport.cbSize = sizeof transport;
            transport.hCryptProv = agreed.hCryptProv;
            transport.dwKeySpec = agreed.dwKeySpec;
            transport.pKeyTrans = real.pKeyTrans;
            transport.dwRecipientIndex = agreed.dwRecipientIndex;
            return control(message, flags, CMSG_CTRL_KEY_TRANS_DECRYPT, &transport);
        });
    for (const DWORD count : {1u, 2u}) {
        agreement.cRecipientEncryptedKeys = count;
        if (count == 2)
            EXPECT_EQ(provider_.decrypt(enveloped_), data_);
        else
            EXPECT_THROW(provider_.decrypt(enveloped_), std::runtime_error) << "certificate not found";
    }
}

// Chains are fetched, and keys of tokens are slow: whoever wrote a message is not to keep its reader busy.
TEST_F(Operations, WorkForSignersAndRecipientsHasAnEnd) {
    int asked = 0;
    const auto progress = std::make_shared<Progress>();
    const Replaced chain(&::CertGetCertificateChain,
                         [&](auto...) { return progress->cancel(), ++asked, FALSE; });
    EXPECT_EQ(errorCode([&] { Crypto::inspectSignature(from(attached_), {}, 0, progress); }),
              E_CANCELED.code);
    EXPECT_EQ(std::exchange(asked, 0), 1);
    const Bytes message = provider_.encrypt(data_, Certificates(101, certificate_));
    const Replaced patch(&::CryptMsgControl, [&](auto...) { return ++asked, ::SetLastError(denied), FALSE; });
    EXPECT_EQ(failureOf([&] { provider_.decrypt(message); }), Failure(E_CRYPTO_DECRYPT.code, denied));
    EXPECT_EQ(asked, 100);
}

TEST_F(Operations, InspectingTellsTheTimeAndWhatTheSystemRefuses) {
    for (const auto& [old, fresh, member, told] :
         // Another type of content than the signed attributes tell (RFC 5652 11.1).
         {std::tuple(L"2A864886F70D010701A0", L"2A864886F70D010705A0", "verdict", "unknown"),
          // GeneralizedTime, which years from 2050 on have (RFC 5652 11.3), at the cost of the next one's
          // digest.
          {L"301C06092A864886F70D010905",
           L"301E06092A864886F70D0109053111180F32303531303130323033303430355A302D06092A864886F70D010904312004"
           L"1E",
           "signingTime", "2051-01-02T03:04:05Z"}}) {
        std::wstring digits = binToHex(readTestData("pki/attached-attributes.p7s"));
        digits.replace(digits.find(old), std::wcslen(fresh), fresh);
        const Json::Value report = parseJson(Crypto::inspectSignature(hexToBin(digits), nullptr, {}, 0));
        EXPECT_EQ(report["signers"][0][member].asString(), told);
    }
    // The digest of the content is compared, but not told.
    const auto ask = ImportPatch::behind(&::CryptMsgGetParam);
    const Replaced patch(&::CryptMsgGetParam, [&](auto message, DWORD type, auto... rest) {
        return type != CMSG_COMPUTED_HASH_PARAM && ask(message, type, rest...);
    });
    EXPECT_EQ(parseJson(Crypto::inspectSignature(withOtherContent(), nullptr, {}, 0))["verdict"].asString(),
              "changed");
}

}  // namespace
