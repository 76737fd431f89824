#include "crypto/crypto_api_provider.h"

#include "core/system_exception.h"
#include "platform/import_patch.h"
#include "unit/pki.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

// The code of the descriptor that `action` fails with, and the system's own number.
std::pair<std::uint32_t, std::uint32_t> failureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Win32Exception& exception) {
        return {exception.code(), exception.error()};
    }
    return {};
}

Bytes changed(Bytes bytes) {
    bytes.front() ^= 1;
    return bytes;
}

std::vector<std::wstring> namesOf(const Certificates& certificates) {
    std::vector<std::wstring> names;
    for (const SharedCertificate& certificate : certificates)
        names.push_back(certificate->getName(false));
    return names;
}

using Names = std::vector<std::wstring>;
const Names signerAlone{L"Иванов Иван"};

bool contains(const Bytes& bytes, const Bytes& part) {
    return std::search(bytes.begin(), bytes.end(), part.begin(), part.end()) != bytes.end();
}

TEST(ProviderRecords, FirstOneForTheKeyIsChosen) {
    const struct {
        const char* certificate;
        DWORD type;
        const wchar_t* hash;
    } cases[] = {
        {"gost2001", 75, L"1.2.643.2.2.9"},
        {"gost256", 80, L"1.2.643.7.1.1.2.2"},
        {"gost512", 81, L"1.2.643.7.1.1.2.3"},
        {"signer", PROV_RSA_AES, L"2.16.840.1.101.3.4.2.1"},
    };
    for (const auto& c : cases) {
        const Crypto::SharedProvider provider = Crypto::getCryptoProvider(pkiCertificate(c.certificate));
        EXPECT_EQ(provider->record().type, c.type) << c.certificate;
        EXPECT_EQ(provider->record().hash, std::wstring(c.hash)) << c.certificate;
    }
    EXPECT_EQ(findProviderRecord(L"1.2.840.10045.2.1"), nullptr);  // elliptic curves of X9.62
}

TEST(ProviderRecords, DefaultIsTheFirstThatOpens) {
    // Without a GOST provider that is the last record, which Windows always has.
    EXPECT_EQ(&defaultProviderRecord(), &providerRecords().back());
    EXPECT_EQ(providerRecords().size(), 5u);
}

class CryptoProviderTest : public testing::Test {
protected:
    const Bytes document_ = pkiFile("document.bin");
    const Certificate signer_ = pkiSigner("signer");
    const Crypto::SharedProvider provider_ = Crypto::getCryptoProvider(signer_);
};

TEST_F(CryptoProviderTest, DetachedSignature) {
    const Bytes signature = provider_->sign(document_, signer_, false, false);
    EXPECT_FALSE(contains(signature, document_));
    EXPECT_EQ(namesOf(provider_->verifyMessageSignature(signature, &document_, {})), signerAlone);
    const Bytes other = changed(document_);
    EXPECT_EQ(failureOf([&] { provider_->verifyMessageSignature(signature, &other, {}); }),
              std::pair(305u, static_cast<std::uint32_t>(NTE_BAD_SIGNATURE)));
}

TEST_F(CryptoProviderTest, AttachedSignature) {
    Bytes signature = provider_->sign(document_, signer_, true, false);
    EXPECT_TRUE(contains(signature, document_));
    EXPECT_EQ(namesOf(provider_->verifyMessageSignature(signature, nullptr, {})), signerAlone);
    *std::search(signature.begin(), signature.end(), document_.begin(), document_.end()) ^= 1;
    EXPECT_EQ(failureOf([&] { provider_->verifyMessageSignature(signature, nullptr, {}); }).first, 305u);
}

TEST_F(CryptoProviderTest, SignsNothingAndMuch) {
    for (const Bytes& data : {Bytes(), Bytes(1, 0), Bytes(3'000'000, 0xA5)}) {
        const Bytes signature = provider_->sign(data, signer_, false, false);
        EXPECT_EQ(provider_->verifyMessageSignature(signature, &data, {}).size(), 1u) << data.size();
    }
}

TEST_F(CryptoProviderTest, CertificateWithoutKeyCannotSign) {
    EXPECT_EQ(failureOf([&] { provider_->sign(document_, pkiCertificate("root"), false, false); }).first,
              304u);
}

TEST_F(CryptoProviderTest, VerifiesMessagesOfOpenSsl) {
    const struct {
        const char* file;
        bool detached;
        Names signers;
    } cases[] = {
        {"detached-plain.p7s", true, signerAlone},
        {"detached-attributes.p7s", true, signerAlone},
        {"detached-chain.p7s", true, signerAlone},
        {"attached-plain.p7s", false, signerAlone},
        {"attached-attributes.p7s", false, signerAlone},
        {"attached-ber.p7s", false, signerAlone},
        {"no-signers.p7s", true, {}},
    };
    for (const auto& c : cases) {
        const Bytes signature = pkiFile(c.file);
        const Bytes* data = c.detached ? &document_ : nullptr;
        EXPECT_EQ(namesOf(provider_->verifyMessageSignature(signature, data, {})), c.signers) << c.file;
    }
}

TEST_F(CryptoProviderTest, SignerIsLookedUpAmongTheSuppliedCertificates) {
    const Bytes signature = pkiFile("detached-no-certificate.p7s");
    const auto second = std::make_shared<Certificate>(pkiCertificate("second"));
    const auto signer = std::make_shared<Certificate>(signer_);
    EXPECT_EQ(failureOf([&] { provider_->verifyMessageSignature(signature, &document_, {}); }).first, 305u);
    EXPECT_EQ(failureOf([&] { provider_->verifyMessageSignature(signature, &document_, {second}); }).first,
              305u);
    EXPECT_EQ(namesOf(provider_->verifyMessageSignature(signature, &document_, {second, signer})),
              signerAlone);
}

TEST_F(CryptoProviderTest, WhatIsNoMessageIsRefused) {
    Bytes cut = pkiFile("detached-plain.p7s");
    cut.resize(cut.size() / 2);
    for (const Bytes& signature : {Bytes(), Bytes(100, 0x30), cut, pkiFile("signer.der"), document_})
        EXPECT_EQ(failureOf([&] { provider_->verifyMessageSignature(signature, &document_, {}); }).first,
                  305u)
            << signature.size();
}

// Answers for the signers of a message, one after the other: a certificate, or the error for its signature.
struct Answer {
    const char* certificate;
    DWORD error;
};
std::vector<Answer> answers;

WINBOOL WINAPI answerInTurn(PCRYPT_VERIFY_MESSAGE_PARA, DWORD index, const BYTE*, DWORD, DWORD, const BYTE**,
                            DWORD*, PCCERT_CONTEXT* signer) {
    const Answer answer = index < answers.size() ? answers[index] : Answer{nullptr, ERROR_SUCCESS};
    if (answer.certificate) {
        *signer = ::CertDuplicateCertificateContext(pkiCertificate(answer.certificate).context());
    }
    ::SetLastError(answer.error);
    return answer.certificate != nullptr;
}

TEST_F(CryptoProviderTest, SignersAreGatheredToTheLast) {
    constexpr auto noSigner = static_cast<DWORD>(CRYPT_E_NO_SIGNER);
    const ImportPatch patch(::GetModuleHandleW(nullptr), "CryptVerifyDetachedMessageSignature",
                            &answerInTurn);
    const struct {
        const char* what;
        std::vector<Answer> answers;
        Names signers;
    } cases[] = {
        {"two signers",
         {{"root", 0}, {"second", 0}, {nullptr, noSigner}},
         {L"Corvane Test Root", L"Second Signer"}},
        {"a failure without a code", {{nullptr, 0}, {"second", 0}, {nullptr, noSigner}}, {L"Second Signer"}},
        {"nothing but such failures", {}, {}},
    };
    for (const auto& c : cases) {
        answers = c.answers;
        EXPECT_EQ(namesOf(provider_->verifyMessageSignature(Bytes(100), &document_, {})), c.signers)
            << c.what;
    }
    answers = {{"root", 0}, {nullptr, static_cast<DWORD>(CRYPT_E_HASH_VALUE)}, {nullptr, noSigner}};
    EXPECT_EQ(failureOf([&] { provider_->verifyMessageSignature(Bytes(100), &document_, {}); }),
              std::pair(305u, static_cast<std::uint32_t>(CRYPT_E_HASH_VALUE)));
}

}  // namespace
