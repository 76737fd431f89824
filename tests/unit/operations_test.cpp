// Operations on messages while the system's calls fail one after the other, and on messages that are torn or
// changed. The message functions and the GOST provider are those of tests/platform; the keys are made here.
#include "api_faults.h"
#include "core/json.h"
#include "core/utf8.h"
#include "crypto/api/encoding.h"
#include "crypto/message/inspect.h"
#include "crypto/message/provider_choice.h"
#include "crypto/provider/provider_list.h"
#include "key_container.h"

#include <gmock/gmock.h>

#include <map>
#include <optional>
#include <set>

using namespace Corvane;
using namespace Corvane::Test;
using namespace std::string_literals;
using Corvane::Stream::MemoryStream;

namespace {

HCERTSTORE personal = nullptr;  // in the place of the user's "My"
HCERTSTORE machines = nullptr;  // and of the machine's
decltype(&::CertOpenStore) openSystemStore = nullptr;

HCERTSTORE WINAPI openStore(LPCSTR provider, DWORD encoding, HCRYPTPROV_LEGACY context, DWORD flags,
                            const void* argument) {
    if (provider != CERT_STORE_PROV_SYSTEM_W)
        return openSystemStore(provider, encoding, context, flags, argument);
    trace.places.push_back(flags & CERT_SYSTEM_STORE_LOCATION_MASK);
    return ::CertDuplicateStore(trace.places.back() == CERT_SYSTEM_STORE_CURRENT_USER ? personal : machines);
}

void takeStandIns() {
    const HMODULE gost = ::LoadLibraryW(CORVANE_PLATFORM L"/gostcsp.dll");
    ASSERT_TRUE(gost && ::LoadLibraryW(CORVANE_PLATFORM L"/msgstandin.dll")) << ::GetLastError();
    const auto install = reinterpret_cast<HRESULT(WINAPI*)()>(
        reinterpret_cast<void (*)()>(::GetProcAddress(gost, "DllRegisterServer")));
    ASSERT_EQ(install(), S_OK);
}

// Certificates as a text that can be compared.
std::string told(const Certificates& certificates) {
    std::string all = std::to_string(certificates.size());
    for (const SharedCertificate& one : certificates) {
        const Bytes content = one->getContent();
        all.append(content.begin(), content.end());
    }
    return all;
}

std::string told(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

// What may come of a failing call, besides the codes of the error table.
enum Outcome : std::uint32_t { sameAnswer, otherAnswer };
using Outcomes = std::map<std::string_view, std::set<std::uint32_t>>;

// An operation, on a message or none, with what a failing call may come to besides the usual.
struct Row {
    const char* name;
    Bytes message;
    std::function<std::string(const Bytes&)> work;
    Outcomes own;
    bool isCertain;  // of a changed message, another answer than the good one is none
};
constexpr bool certain = true;

Row operation(const char* name, const Bytes& message, std::function<std::string(const Bytes&)> work,
              const Outcomes& own = {}, bool isCertain = false) {
    return {name, message, std::move(work), own, isCertain};
}

class Operations : public testing::Test {
protected:
    static void SetUpTestSuite() {
        takeStandIns();
        openSystemStore = ImportPatch::behind(&::CertOpenStore);
    }

    Operations() : provider_(rsaRecord()), store_(memoryStore()), empty_(memoryStore()) {
        rsa_.makeKey();
        gost_.makeKey();
        certificate_ = selfSigned(rsa_, 'A');
        other_ = selfSigned(rsa_, 'B');
        gostCertificate_ = withGostKey(gost_);
        personal = store_.get();
        machines = empty_.get();

        detached_ = signedBy(false);
        attached_ = signedBy(true);
        enveloped_ = provider_.encrypt(data_, {certificate_});
    }

    static CertificateStoreHandle memoryStore() {
        return CertificateStoreHandle(::CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr));
    }

    // Some certificate for such keys.
    SharedCertificate withGostKey(const KeyContainer& key) {
        const Bytes der = readTestData("pki/gost2001.der");
        const CertificateContext foreign(
            ::CertCreateCertificateContext(X509_ASN_ENCODING, der.data(), static_cast<DWORD>(der.size())));
        CRYPT_KEY_PROV_INFO info = key.place();
        must(::CertSetCertificateContextProperty(foreign.get(), CERT_KEY_PROV_INFO_PROP_ID, 0, &info));
        return add(foreign);
    }

    // With a cipher that the system knows by itself: what is registered it only reads when it is loaded.
    static ProviderRecord rsaRecord() {
        ProviderRecord record = providerRecords().back();
        record.cipher = wide(szOID_RSA_DES_EDE3_CBC);
        return record;
    }

    SharedCertificate add(const CertificateContext& certificate) {
        CertificateContext added;
        must(::CertAddCertificateContextToStore(store_.get(), certificate.get(), CERT_STORE_ADD_ALWAYS,
                                                added.put()));
        return std::make_shared<Certificate>(std::move(added));
    }

    SharedCertificate selfSigned(const KeyContainer& key, BYTE letter) {
        return add(key.selfSigned(
            {0x30, 0x0C, 0x31, 0x0A, 0x30, 0x08, 0x06, 0x03, 0x55, 0x04, 0x03, 0x0C, 0x01, letter}));
    }

    // By two signers.
    Bytes signedBy(bool attached) const {
        return provider_.addSignerToSignature(provider_.sign(data_, *certificate_, attached, false),
                                              attached ? nullptr : &data_, *certificate_, false);
    }

    // What an operation writes behind what was there.
    std::string written(const std::function<void(Stream::IBinaryStream&)>& operation) {
        output_.emplace();
        output_->write(bytesOf(before));
        operation(*output_);
        return told(contentOf(*output_)).substr(before.size());
    }

    std::vector<Row> makers();
    std::vector<Row> readers();

    static constexpr std::string_view before = "before";
    static constexpr wchar_t gostProvider[] = L"Crypto-Pro GOST R 34.10-2001 Cryptographic Service Provider";

    const ImportPatch opening_{"CertOpenStore", &openStore};
    KeyContainer rsa_{MS_ENH_RSA_AES_PROV_W, PROV_RSA_AES, L"RSA"};
    KeyContainer gost_{gostProvider, 75, L"GOST"};
    CryptoApiProvider provider_;
    CertificateStoreHandle store_;
    CertificateStoreHandle empty_;
    SharedCertificate certificate_;
    SharedCertificate other_;  // of the same key
    SharedCertificate gostCertificate_;
    Bytes data_ = sampleBytes(100);
    Bytes detached_;
    Bytes attached_;
    Bytes enveloped_;
    Certificates given_;  // to those who verify what the data are in
    std::optional<MemoryStream> output_;
};

const Outcomes usual = {
    {"CertAddCertificateContextToStore", {E_CERT_STORE_INSTALL.code}},
    {"CertEnumCertificatesInStore", {E_CRYPTO_EXTRACT_CERT.code}},
    {"CertFindCertificateInStore", {E_CRYPTO_DECRYPT.code}},
    {"CertGetCertificateChain", {E_CERT_GET_CHAIN.code}},
    // Those that the caller supplied are not the only ones.
    {"CertGetSubjectCertificateFromStore", {sameAnswer, E_CRYPTO_VERIFY.code}},
    {"CertOpenStore", {E_CERT_STORE_OPEN.code}},
    {"CryptAcquireCertificatePrivateKey", {E_CRYPTO_SIGN.code}},
    {"CryptAcquireContextW", {E_CRYPTO_PROVIDER.code}},
    {"CryptCreateHash", {E_CRYPTO_HASH.code}},
    {"CryptEncryptMessage", {E_CRYPTO_ENCRYPT.code}},
    {"CryptEnumProvidersW", {E_CRYPTO_ENUM_PROVIDERS.code}},
    {"CryptGetMessageSignerCount", {sameAnswer}},
    {"CryptHashData", {E_CRYPTO_HASH.code}},
    {"CryptMsgControl", {E_CRYPTO_VERIFY.code}},
    {"CryptMsgGetParam", {E_CRYPTO_MESSAGE_PARAM.code}},
    {"CryptMsgOpenToDecode", {E_CRYPTO_MESSAGE_OPEN_DECODE.code}},
    {"CryptMsgOpenToEncode", {E_CRYPTO_MESSAGE_OPEN_ENCODE.code}},
    {"CryptMsgUpdate", {E_CRYPTO_MESSAGE_UPDATE.code}},
    {"CryptSignHashW", {E_CRYPTO_SIGN.code}},
    {"CryptSignMessage", {E_CRYPTO_SIGN.code}},
    {"CryptVerifyDetachedMessageSignature", {E_CRYPTO_VERIFY.code}},
    {"CryptVerifyMessageSignature", {E_CRYPTO_VERIFY.code}},
};

// For every call of adding a signer.
const Outcomes adding = {
    {"", {E_CRYPTO_MESSAGE_ADD_SIGNER.code}},
    {"CertGetCertificateChain", {E_CERT_GET_CHAIN.code}},
    {"CertGetSubjectCertificateFromStore", {sameAnswer}},
    {"CryptMsgControl", {E_CRYPTO_MESSAGE_ADD_SIGNER.code, E_CRYPTO_MESSAGE_ADD_CERT.code}},
};

const Outcomes decrypting = {
    {"CertGetCertificateContextProperty", {E_CERT_PROPERTY.code}},
    {"CryptAcquireCertificatePrivateKey", {E_CRYPTO_DECRYPT.code}},
    {"CryptMsgControl", {E_CRYPTO_DECRYPT.code}},
    {"CryptMsgGetParam", {E_CRYPTO_DECRYPT.code, E_CRYPTO_MESSAGE_PARAM.code}},
};

// Most of what cannot be found out is told as such.
const Outcomes inspecting = {
    {"CertGetCertificateChain", {otherAnswer}},
    {"CertGetCertificateContextProperty", {E_CERT_HASH.code}},
    {"CertGetSubjectCertificateFromStore", {sameAnswer, otherAnswer}},
    {"CryptAcquireContextW", {sameAnswer, otherAnswer}},
    {"CryptCreateHash", {otherAnswer}},
    {"CryptDecodeObject", {otherAnswer}},
    {"CryptFindOIDInfo", {otherAnswer}},
    {"CryptHashData", {otherAnswer}},
    {"CryptImportPublicKeyInfo", {otherAnswer}},
    {"CryptMsgControl", {sameAnswer, otherAnswer}},
    {"CryptMsgGetParam", {otherAnswer, E_CRYPTO_MESSAGE_PARAM.code}},
    {"CryptVerifySignatureW", {otherAnswer}},
};

const Outcomes extracting = {{"CertOpenStore", {E_CRYPTO_EXTRACT_CERT.code}}};

std::set<std::uint32_t> expectedOf(const std::string& call, const Outcomes& own) {
    for (const auto& [outcomes, name] :
         {std::pair(&own, std::string_view(call)), {&own, ""}, {&usual, std::string_view(call)}}) {
        if (const auto found = outcomes->find(name); found != outcomes->end())
            return found->second;
    }
    return {};
}

std::shared_ptr<SourceStream> from(const Bytes& bytes) {
    return std::make_shared<SourceStream>(bytes, 300);
}

using Output = Stream::IBinaryStream;
const SharedProgress none;

std::vector<Row> Operations::makers() {
    const auto* const p = &provider_;
    const Certificates both{certificate_, other_};
    const auto size = [](const auto& bytes) { return std::to_string(bytes.size()); };
    const auto toStream = [=, this](const auto& write) { return size(written(write)); };
    return {
        operation("sign", {}, [=, this](auto&) { return size(p->sign(data_, *certificate_, true, true)); }),
        operation("sign a stream", {},
                  [=, this](auto&) {
                      return toStream(
                          [&](Output& out) { p->sign(*from(data_), out, *certificate_, true, true, none); });
                  }),
        operation("raw", {}, [=, this](auto&) { return size(p->rawSign(data_, *gostCertificate_)); }),
        operation(
            "add", {},
            [=, this](auto&) { return size(p->addSignerToSignature(detached_, &data_, *other_, true)); },
            adding),
        operation("encrypt", {}, [=, this](auto&) { return size(p->encrypt(data_, both)); }),
        operation("encrypt a stream", {},
                  [=, this](auto&) {
                      return toStream(
                          [&](Output& out) { p->encrypt(*from(data_), out, {certificate_}, none); });
                  }),
        operation("chain", {}, [this](auto&) { return std::to_string(certificate_->verify(0)); },
                  {{"CertGetCertificateChain", {E_CERT_CHAIN.code}}}),
        operation("providers", {}, [](auto&) { return toUtf8(Crypto::getCryptoProvidersInfo()); },
                  {{"CryptAcquireContextW", {sameAnswer, otherAnswer}}}),
        operation(
            "provider", {},
            [](auto&) { return toUtf8(Crypto::findProvider(MS_ENH_RSA_AES_PROV_W, PROV_RSA_AES).name); }),
    };
}

std::vector<Row> Operations::readers() {
    // The content is another one, so that the signature over the attributes is asked for by itself.
    Bytes inspected = readTestData("pki/attached-attributes.p7s");
    const Bytes document = readTestData("pki/document.bin");
    *std::search(inspected.begin(), inspected.end(), document.begin(), document.end()) ^= 1;
    const auto* const p = &provider_;
    const Certificates own{certificate_};
    return {
        operation(
            "verify", detached_,
            [=, this](auto& m) { return told(p->verifyMessageSignature(m, &data_, own)); }, {}, certain),
        operation(
            "verify attached", attached_,
            [=, this](auto& m) { return told(p->verifyMessageSignature(m, nullptr, given_)); }, {}, certain),
        operation(
            "verify data of a stream", detached_,
            [=, this](auto& m) { return told(p->verifyMessageSignature(m, *from(data_), own, none)); }, {},
            certain),
        operation(
            "verify a stream", attached_,
            [=, this](auto& m) { return told(p->verifyMessageSignature(*from(m), given_, none)); }, {},
            certain),
        operation(
            "certificates", attached_, [=](auto& m) { return told(p->getCertificatesFromSignature(m)); },
            extracting),
        operation(
            "certificates of a stream", attached_,
            [=](auto& m) { return told(p->extractCertificatesFromSignature(*from(m), none)); }, extracting),
        operation("content", attached_, [=](auto& m) { return told(p->getContentFromSignature(m)); }),
        operation("content of a stream", attached_,
                  [=, this](auto& m) {
                      return written(
                          [&](Output& out) { p->extractContentFromSignature(*from(m), out, none); });
                  }),
        operation(
            "decrypt", enveloped_, [=](auto& m) { return told(p->decrypt(m)); }, decrypting),
        operation(
            "decrypt a stream", enveloped_,
            [=, this](auto& m) { return written([&](Output& out) { p->decrypt(*from(m), out, none); }); },
            decrypting),
        operation(
            "inspect", inspected, [](auto& m) { return toUtf8(Crypto::inspectSignature(m, nullptr, {}, 0)); },
            inspecting),
    };
}

TEST_F(Operations, EveryCallFailsOnce) {
    std::vector<Row> rows = makers();
    std::ranges::move(readers(), std::back_inserter(rows));
    const Patches patches = countCalls();
    for (const Row& row : rows) {
        trace = {};
        std::string good;
        EXPECT_EQ(failureOf([&] { good = row.work(row.message); }), Failure()) << row.name;
        EXPECT_EQ(trace.open, decltype(trace.open){}) << row.name;
        for (int call = 1, calls = trace.calls; call <= calls; ++call) {
            output_.reset();
            trace = {};
            trace.failing = call;
            std::string answer;
            auto [outcome, error] = failureOf([&] { answer = row.work(row.message); });
            SCOPED_TRACE(row.name + (", call " + std::to_string(call)) + ": " + trace.failed);
            const bool isAnswer = outcome == 0;
            if (isAnswer)
                outcome = answer == good ? sameAnswer : otherAnswer;
            EXPECT_TRUE(expectedOf(trace.failed, row.own).contains(outcome)) << outcome;
            // The system has a code of its own for a certificate that its caller does not give it.
            EXPECT_TRUE(isAnswer || error == denied ||
                        (trace.failed == "CertGetSubjectCertificateFromStore" &&
                         error == static_cast<DWORD>(CRYPT_E_NOT_FOUND)))
                << error;
            EXPECT_EQ(trace.open, decltype(trace.open){});
            const std::string left = output_ ? told(contentOf(*output_)) : std::string(before);
            EXPECT_TRUE(isAnswer || left == before ||
                        (row.name == "sign a stream"s && left.starts_with(before)));
        }
    }
}

DWORD chainFlags = 0;

WINBOOL WINAPI recordChainFlags(HCERTCHAINENGINE, PCCERT_CONTEXT, LPFILETIME, HCERTSTORE, PCERT_CHAIN_PARA,
                                DWORD flags, LPVOID, PCCERT_CHAIN_CONTEXT*) {
    chainFlags = flags;
    return FALSE;
}

TEST_F(Operations, FlagsOfChainsArePassedBitForBit) {
    const ImportPatch patch("CertGetCertificateChain", &recordChainFlags);
    for (const DWORD flags : {DWORD{0}, DWORD{0x20000000}, DWORD{0x80000001}, ~DWORD{0}}) {
        EXPECT_EQ(errorCode([&] { certificate_->verify(flags); }), E_CERT_CHAIN.code);
        EXPECT_EQ(chainFlags, flags);
    }
}

std::vector<std::pair<DWORD, BOOL>> updates;

WINBOOL WINAPI recordUpdate(HCRYPTMSG, const BYTE*, DWORD size, BOOL last) {
    updates.emplace_back(size, last);
    return TRUE;
}

TEST_F(Operations, ContentComesInBlocksOfOneByteLessThanAMebibyte) {
    const ImportPatch patch("CryptMsgUpdate", &recordUpdate);
    SourceStream input(Bytes(1048575));
    MemoryStream output;
    provider_.sign(input, output, *certificate_, true, false, {});
    EXPECT_EQ(updates, (decltype(updates){{1048575, FALSE}, {0, TRUE}}));
}

DWORD announced = 0;

HCRYPTMSG WINAPI recordSize(DWORD, DWORD, DWORD, const void*, LPSTR, PCMSG_STREAM_INFO stream) {
    announced = stream->cbContent;
    return nullptr;
}

TEST_F(Operations, SizesAreAnnouncedWhereTheyFit) {
    class SizedStream : public MemoryStream {
    public:
        explicit SizedStream(Stream::State state) : state_(state) {}
        Stream::State state() const override { return state_; }

    private:
        Stream::State state_;
    };
    constexpr DWORD unknown = CMSG_INDEFINITE_LENGTH;
    const struct {
        Stream::State state;
        DWORD whenSigned;
        DWORD whenEncrypted;
    } rows[] = {
        {{0, 0}, 0, 0},
        {{30, 100}, 70, 70},
        {{0, 0xFF000000}, 0xFF000000, 0xFF000000},
        // With padding and recipients the message would be of 4 GiB.
        {{0, 0xFFFFFFFE}, 0xFFFFFFFE, unknown},
        {{0, 0xFFFFFFFF}, unknown, unknown},
        {{0, 0x100000005}, unknown, unknown},
        {{6, 0x100000005}, unknown, unknown},
    };
    const ImportPatch patch("CryptMsgOpenToEncode", &recordSize);
    for (const auto& [state, whenSigned, whenEncrypted] : rows) {
        SizedStream input(state);
        MemoryStream output;
        EXPECT_EQ(errorCode([&] { provider_.sign(input, output, *certificate_, true, false, {}); }),
                  E_CRYPTO_MESSAGE_OPEN_ENCODE.code);
        EXPECT_EQ(announced, whenSigned) << state.size;
        EXPECT_EQ(errorCode([&] { provider_.encrypt(input, output, {certificate_}, {}); }),
                  E_CRYPTO_MESSAGE_OPEN_ENCODE.code);
        EXPECT_EQ(announced, whenEncrypted) << state.size;
    }
}

TEST_F(Operations, KeysForSignaturesAlone) {
    KeyContainer rsa(MS_ENH_RSA_AES_PROV_W, PROV_RSA_AES, L"RSA, signatures");
    KeyContainer gost(gostProvider, 75, L"GOST, signatures");
    rsa.makeKey(AT_SIGNATURE);
    gost.makeKey(AT_SIGNATURE);
    const SharedCertificate signer = selfSigned(rsa, 'S');
    const Patches patches = countCalls();
    trace = {};
    const Bytes once = provider_.sign(data_, *signer, true, false);
    // Asked for once and kept, since the message is made in two calls.
    EXPECT_EQ(trace.keyFlags & CRYPT_ACQUIRE_CACHE_FLAG, CRYPT_ACQUIRE_CACHE_FLAG);
    const std::string streamed =
        written([&](Output& output) { provider_.sign(*from(data_), output, *signer, true, false, {}); });
    EXPECT_EQ(trace.keyFlags, 0u);
    const Bytes twice = provider_.addSignerToSignature(bytesOf(streamed), nullptr, *signer, false);
    EXPECT_EQ(told(provider_.verifyMessageSignature(once, nullptr, {})), told(Certificates{signer}));
    EXPECT_EQ(told(provider_.verifyMessageSignature(twice, nullptr, {})), told({signer, signer}));
    EXPECT_EQ(provider_.rawSign(data_, *withGostKey(gost)).size(), 64u);
}

TEST_F(Operations, MessagesAndCertificatesAreTheOnesThatAreMeant) {
    EXPECT_EQ(errorCode([&] { provider_.verifyMessageSignature(attached_, &data_, {}); }),
              E_CRYPTO_VERIFY.code);
    EXPECT_EQ(errorCode([&] { provider_.verifyMessageSignature(detached_, nullptr, {}); }),
              E_CRYPTO_VERIFY.code);
    // Of the same key, but not what the message names.
    EXPECT_EQ(told(provider_.verifyMessageSignature(attached_, nullptr, {other_})),
              told({certificate_, certificate_}));

    const Patches patches = countCalls();
    const CertificateStoreHandle second = memoryStore();
    must(::CertAddCertificateContextToStore(second.get(), certificate_->context(), CERT_STORE_ADD_ALWAYS,
                                            nullptr));
    personal = second.get();
    const std::string streamed = written([&](Output& output) {
        provider_.encrypt(*from(data_), output, {other_, certificate_}, {});
    });
    for (const Bytes& message : {provider_.encrypt(data_, {other_, certificate_}), bytesOf(streamed)})
        EXPECT_EQ(provider_.decrypt(message), data_);

    const CertificateStoreHandle bare = memoryStore();
    const Bytes der = certificate_->getContent();
    must(::CertAddEncodedCertificateToStore(bare.get(), X509_ASN_ENCODING, der.data(),
                                            static_cast<DWORD>(der.size()), CERT_STORE_ADD_ALWAYS, nullptr));
    personal = bare.get();
    EXPECT_THAT([&] { provider_.decrypt(enveloped_); },
                testing::ThrowsMessage<std::runtime_error>("certificate not found"));
    machines = store_.get();
    trace = {};
    EXPECT_EQ(provider_.decrypt(enveloped_), data_);
    EXPECT_EQ(trace.places,
              (std::vector<DWORD>{CERT_SYSTEM_STORE_CURRENT_USER, CERT_SYSTEM_STORE_LOCAL_MACHINE}));
}

TEST_F(Operations, SecondSigners) {
    // Once, though both bring it.
    const std::string content = told(certificate_->getContent());
    EXPECT_EQ(told(attached_).find(content), told(attached_).rfind(content));
    const Bytes others = sampleBytes(99);
    EXPECT_EQ(errorCode([&] { provider_.addSignerToSignature(detached_, &others, *certificate_, false); }),
              E_CRYPTO_MESSAGE_ADD_SIGNER.code);
    attached_.back() ^= 1;  // of the second signature
    EXPECT_EQ(errorCode([&] { provider_.verifyMessageSignature(attached_, nullptr, {}); }),
              E_CRYPTO_VERIFY.code);
    SourceStream stream(attached_);
    EXPECT_EQ(errorCode([&] { provider_.verifyMessageSignature(stream, {}, {}); }), E_CRYPTO_VERIFY.code);
}

TEST_F(Operations, StreamsThatAreCanceledOrNotAsLongAsTheySaid) {
    class GrownStream : public SourceStream {
    public:
        using SourceStream::SourceStream;
        Stream::State state() const override {
            const Stream::State state = SourceStream::state();
            return {state.position, state.size - 1};
        }
    };
    const Patches patches = countCalls();
    const std::function<void(Stream::IBinaryStream&, Stream::IBinaryStream&, const SharedProgress&)> works[] =
        {
            [&](auto& input, auto& output, const auto& progress) {
                provider_.sign(input, output, *certificate_, true, false, progress);
            },
            [&](auto& input, auto& output, const auto& progress) {
                provider_.encrypt(input, output, {certificate_}, progress);
            },
            [&](auto& input, auto& output, const auto& progress) {
                provider_.decrypt(input, output, progress);
            },
            [&](auto& input, auto& output, const auto& progress) {
                provider_.extractContentFromSignature(input, output, progress);
            },
        };
    for (const auto& work : works) {
        MemoryStream output;
        const auto progress = std::make_shared<Progress>();
        SourceStream input(&work == &works[3] ? attached_ : enveloped_);
        output.resize(0x10000);
        work(input, output, progress);
        EXPECT_EQ(progress->fraction(), 1.0);
        // Nothing is left behind it of what was there before.
        EXPECT_EQ(output.state().size, output.state().position);
        progress->cancel();
        input.seek(0, Stream::Origin::beginning);
        // Nothing was written, so what stands behind the output's position stays.
        const Bytes complete = contentOf(output);
        output.seek(1, Stream::Origin::beginning);
        EXPECT_EQ(errorCode([&] { work(input, output, progress); }), E_CANCELED.code);
        EXPECT_EQ(contentOf(output), complete);
        GrownStream grown(enveloped_);
        if (&work < &works[2]) {
            EXPECT_EQ(errorCode([&] { work(grown, output, {}); }), E_READ_OR_WRONG_FILE_SIZE.code);
        }
    }
}

TEST_F(Operations, AFailedDecryptionIsToldAsOneAndLeavesNothing) {
    // Of full ciphers' blocks, and more than one block of a stream; the padding, eight times 8 (RFC 5652
    // 6.3), ends with 0x88 when that bit of the block before changes.
    Bytes message = provider_.encrypt(sampleBytes(0x100000 + 64), {certificate_});
    message[message.size() - 9] ^= 0x80;
    const Failure expected{E_CRYPTO_DECRYPT.code, static_cast<DWORD>(NTE_BAD_DATA)};
    // The recipient behind the version and the set's head (RFC 5652 6.1) becomes one of another kind,
    // KEKRecipientInfo.
    const Bytes head{0x02, 0x01, 0x00, 0x31};
    Bytes foreign = message;
    const auto version = std::search(foreign.begin(), foreign.end(), head.begin(), head.end());
    ASSERT_LT(version, foreign.end() - 200);
    const auto length = version + 4;
    const auto recipient = length + 1 + (*length < 0x80 ? 0 : *length & 0x7F);
    ASSERT_EQ(*recipient, 0x30);
    *recipient = 0xA2;
    EXPECT_THROW(provider_.decrypt(foreign), std::runtime_error) << "certificate not found";
    const Patches patches = countCalls();
    EXPECT_EQ(failureOf([&] { provider_.decrypt(message); }), expected);
    EXPECT_EQ(
        failureOf([&] { written([&](Output& output) { provider_.decrypt(*from(message), output, none); }); }),
        expected);
    EXPECT_EQ(told(contentOf(*output_)), before);
}

int asked = 0;
SharedProgress wanted;

WINBOOL WINAPI cancelAtChain(HCERTCHAINENGINE, PCCERT_CONTEXT, LPFILETIME, HCERTSTORE, PCERT_CHAIN_PARA,
                             DWORD, LPVOID, PCCERT_CHAIN_CONTEXT*) {
    ++asked;
    wanted->cancel();
    return FALSE;
}

PCCERT_CONTEXT WINAPI cancelAtSearch(HCERTSTORE, DWORD, DWORD, DWORD, const void*, PCCERT_CONTEXT) {
    ++asked;
    wanted->cancel();
    ::SetLastError(static_cast<DWORD>(CRYPT_E_NOT_FOUND));
    return nullptr;
}

WINBOOL WINAPI refuseKey(HCRYPTMSG, DWORD, DWORD, const void*) {
    ++asked;
    ::SetLastError(denied);
    return FALSE;
}

// Chains are fetched, and keys of tokens are slow: whoever wrote a message is not to keep its reader busy.
TEST_F(Operations, WorkForSignersAndRecipientsHasAnEnd) {
    const auto canceled = [](const auto& work) {
        asked = 0;
        wanted = std::make_shared<Progress>();
        EXPECT_EQ(errorCode(work), E_CANCELED.code);
        return asked;
    };
    {
        const ImportPatch patch("CertGetCertificateChain", &cancelAtChain);
        EXPECT_EQ(canceled([&] { Crypto::inspectSignature(*from(attached_), {}, 0, wanted); }), 1);
    }
    const Bytes message = provider_.encrypt(data_, Certificates(101, certificate_));
    {
        const ImportPatch patch("CertFindCertificateInStore", &cancelAtSearch);
        // In both stores.
        EXPECT_EQ(canceled([&] {
                      MemoryStream output;
                      provider_.decrypt(*from(message), output, wanted);
                  }),
                  2);
    }
    asked = 0;
    const ImportPatch patch("CryptMsgControl", &refuseKey);
    EXPECT_EQ(failureOf([&] { provider_.decrypt(message); }), (Failure{E_CRYPTO_DECRYPT.code, denied}));
    EXPECT_EQ(asked, 100);
}

// The bytes from where `old` stands first become `fresh`.
TEST_F(Operations, InspectingOddMessages) {
    const struct {
        const wchar_t* old;
        const wchar_t* fresh;
        const char* member;
        const char* told;
    } rows[] = {
        // Another type of content than the signed attributes tell, which the system refuses (RFC 5652 11.1).
        {L"2A864886F70D010701A0", L"2A864886F70D010705A0", "verdict", "unknown"},
        // GeneralizedTime, which years from 2050 on have (RFC 5652 11.3), at the cost of the next one's
        // digest.
        {L"301C06092A864886F70D010905",
         L"301E06092A864886F70D0109053111180F32303531303130323033303430355A302D06092A864886F70D0109043120041"
         L"E",
         "signingTime", "2051-01-02T03:04:05Z"},
    };
    for (const auto& row : rows) {
        std::wstring digits = binToHex(readTestData("pki/attached-attributes.p7s"));
        digits.replace(digits.find(row.old), std::wcslen(row.fresh), row.fresh);
        const Json::Value report = parseJson(Crypto::inspectSignature(hexToBin(digits), nullptr, {}, 0));
        EXPECT_EQ(report["signers"][0][row.member].asString(), row.told);
    }
}

// What was not read yet would be overwritten, and lost.
TEST_F(Operations, OneStreamIsNotReadAndWritten) {
    const struct {
        const ErrorDescriptor& error;
        Bytes content;
        std::function<void(Output&)> run;
    } rows[] = {
        {E_CRYPTO_SIGN, data_,
         [&](Output& both) { provider_.sign(both, both, *certificate_, true, false, none); }},
        {E_CRYPTO_EXTRACT_CONTENT, attached_,
         [&](Output& both) { provider_.extractContentFromSignature(both, both, none); }},
        {E_CRYPTO_ENCRYPT, data_, [&](Output& both) { provider_.encrypt(both, both, {certificate_}, none); }},
        {E_CRYPTO_DECRYPT, provider_.encrypt(data_, {certificate_}),
         [&](Output& both) { provider_.decrypt(both, both, none); }},
    };
    for (const auto& row : rows) {
        SourceStream both(row.content);
        EXPECT_EQ(errorCode([&] { row.run(both); }), row.error.code);
        EXPECT_EQ(contentOf(both), row.content);
    }
}

TEST_F(Operations, TornAndChangedMessages) {
    given_ = {certificate_};
    std::vector<Row> rows = readers();
    // Whatever came of it is good, with one signer more.
    const auto add = [this](const Bytes& bytes) {
        const Bytes more = provider_.addSignerToSignature(bytes, nullptr, *certificate_, false);
        return std::to_string(provider_.verifyMessageSignature(more, nullptr, {certificate_}).size());
    };
    rows.push_back(operation("add", attached_, add, {}, certain));
    // Wine 10 reads beyond its memory where the address of a certificate's issuer has become no URL.
    const ImportPatch chains("CertGetCertificateChain", &recordChainFlags);
    const Patches patches = countCalls();
    std::uint32_t number = 1;
    const auto random = [&](std::size_t below) {
        number = number * 1664525u + 1013904223u;
        return static_cast<std::size_t>(number >> 8) % below;
    };
    for (const Row& row : rows) {
        trace = {};
        const std::string good = row.work(row.message);
        // Nothing is left open; null where there is no answer but one of the component's errors.
        const auto answerTo = [&](const Bytes& bytes) -> std::optional<std::string> {
            trace = {};
            std::optional<std::string> answer;
            try {
                answer = row.work(bytes);
            } catch (const Exception&) {
            } catch (const std::runtime_error& exception) {
                EXPECT_STREQ(exception.what(), "certificate not found");
            }
            EXPECT_EQ(trace.open, decltype(trace.open){}) << row.name;
            return answer;
        };
        for (std::size_t size = 0; size < row.message.size(); ++size)
            EXPECT_FALSE(
                answerTo(Bytes(row.message.begin(), row.message.begin() + static_cast<std::ptrdiff_t>(size))))
                << row.name << " of the first " << size;
        for (int round = 0; round < 250; ++round) {
            Bytes changed = row.message;
            for (std::size_t changes = 1 + random(3); changes != 0; --changes)
                changed[random(changed.size())] = static_cast<std::uint8_t>(random(256));
            const auto answer = answerTo(changed);
            EXPECT_TRUE(!answer || *answer == good || !row.isCertain) << row.name << ", round " << round;
            EXPECT_TRUE(!answer || answer->size() <= 8 * good.size() + 1000)
                << row.name << ", round " << round;
        }
    }
}

}  // namespace
