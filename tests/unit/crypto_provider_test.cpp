#include "crypto/crypto_api_provider.h"

#include "platform/import_patch.h"
#include "unit/pki.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

TEST(ProviderRecords, FirstOneForTheKeyIsChosen) {
    const struct {
        const char* certificate;
        DWORD type;
        const wchar_t* hash;
    } rows[] = {
        {"gost2001", 75, L"1.2.643.2.2.9"},
        {"gost256", 80, L"1.2.643.7.1.1.2.2"},
        {"gost512", 81, L"1.2.643.7.1.1.2.3"},
        {"signer", PROV_RSA_AES, L"2.16.840.1.101.3.4.2.1"},
    };
    for (const auto& row : rows) {
        const Crypto::SharedProvider provider = Crypto::getCryptoProvider(pkiCertificate(row.certificate));
        EXPECT_EQ(provider->record().type, row.type) << row.certificate;
        EXPECT_EQ(provider->record().hash, std::wstring(row.hash)) << row.certificate;
    }
    EXPECT_EQ(findProviderRecord(L"1.2.840.10045.2.1"), nullptr);  // elliptic curves of X9.62
    // The default is the first that opens: without a GOST provider the last one, which Windows always has.
    EXPECT_EQ(&defaultProviderRecord(), &providerRecords().back());
    EXPECT_EQ(providerRecords().size(), 5u);
}

class CryptoProviderTest : public testing::Test {
protected:
    Failure verifying(const Bytes& signature, const Bytes* data) const {
        return failureOf([&] { provider_->verifyMessageSignature(signature, data, {}); });
    }

    const Bytes document_ = pkiFile("document.bin");
    const Certificate signer_ = pkiSigner("signer");
    const Crypto::SharedProvider provider_ = Crypto::getCryptoProvider(signer_);
};

TEST_F(CryptoProviderTest, SignaturesHoldForTheirDataOnly) {
    const Failure bad{E_CRYPTO_VERIFY.code, static_cast<std::uint32_t>(NTE_BAD_SIGNATURE)};
    for (const Bytes& data : {Bytes(), Bytes(1, 0), document_, Bytes(3'000'000, 0xA5)}) {
        SCOPED_TRACE(data.size());
        const Bytes detached = provider_->sign(data, signer_, false, false);
        EXPECT_LT(detached.size(), 3000u);
        EXPECT_EQ(namesOf(provider_->verifyMessageSignature(detached, &data, {})), Names{L"Иванов Иван"});
        Bytes other = data;
        other.push_back(1);
        EXPECT_EQ(verifying(detached, &other), bad);
    }
    Bytes attached = provider_->sign(document_, signer_, true, false);
    EXPECT_EQ(namesOf(provider_->verifyMessageSignature(attached, nullptr, {})), Names{L"Иванов Иван"});
    *std::search(attached.begin(), attached.end(), document_.begin(), document_.end()) ^= 1;
    EXPECT_EQ(verifying(attached, nullptr), bad);
}

TEST_F(CryptoProviderTest, WhatCannotBeSignedOrVerified) {
    EXPECT_EQ(errorCode([&] { provider_->sign(document_, pkiCertificate("root"), false, false); }),
              E_CRYPTO_SIGN.code)
        << "no key";
    EXPECT_TRUE(provider_->verifyMessageSignature(pkiFile("no-signers.p7s"), &document_, {}).empty());
    for (const Bytes& signature : {Bytes(), Bytes(100, 0x30), pkiFile("signer.der")})
        EXPECT_EQ(verifying(signature, &document_).first, E_CRYPTO_VERIFY.code) << signature.size();
}

TEST_F(CryptoProviderTest, SignerIsLookedUpAmongTheSuppliedCertificates) {
    const Bytes signature = pkiFile("detached-no-certificate.p7s");
    Certificates supplied{std::make_shared<Certificate>(pkiCertificate("second"))};
    EXPECT_EQ(errorCode([&] { provider_->verifyMessageSignature(signature, &document_, supplied); }),
              E_CRYPTO_VERIFY.code);
    supplied.push_back(std::make_shared<Certificate>(signer_));
    EXPECT_EQ(namesOf(provider_->verifyMessageSignature(signature, &document_, supplied)),
              Names{L"Иванов Иван"});
}

// Answers for the signers of a message, one after the other: a certificate, or the error for its signature.
struct Answer {
    const char* certificate;
    DWORD error = 0;
};
std::vector<Answer> answers;

WINBOOL WINAPI answerInTurn(PCRYPT_VERIFY_MESSAGE_PARA, DWORD index, const BYTE*, DWORD, DWORD, const BYTE**,
                            DWORD*, PCCERT_CONTEXT* signer) {
    const Answer answer = index < answers.size() ? answers[index] : Answer{nullptr};
    if (answer.certificate)
        *signer = ::CertDuplicateCertificateContext(pkiCertificate(answer.certificate).context());
    ::SetLastError(answer.error);
    return answer.certificate != nullptr;
}

TEST_F(CryptoProviderTest, SignersAreGatheredToTheLast) {
    constexpr Answer end{nullptr, static_cast<DWORD>(CRYPT_E_NO_SIGNER)};
    const ImportPatch patch(&::CryptVerifyDetachedMessageSignature, &answerInTurn);
    const struct {
        const char* what;
        std::vector<Answer> answers;
        Names signers;
    } rows[] = {
        {"two signers", {{"root"}, {"second"}, end}, {L"Corvane Test Root", L"Second Signer"}},
        {"a failure without a code", {{nullptr}, {"second"}, end}, {L"Second Signer"}},
        {"nothing but such failures", {}, {}},
    };
    for (const auto& row : rows) {
        answers = row.answers;
        EXPECT_EQ(namesOf(provider_->verifyMessageSignature(Bytes(100), &document_, {})), row.signers)
            << row.what;
    }
    answers = {{"root"}, {nullptr, static_cast<DWORD>(CRYPT_E_HASH_VALUE)}, end};
    EXPECT_EQ(verifying(Bytes(100), &document_),
              Failure(E_CRYPTO_VERIFY.code, static_cast<std::uint32_t>(CRYPT_E_HASH_VALUE)));
}

}  // namespace
