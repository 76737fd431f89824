// Certificates, their stores and the system's dialogs about them, signatures.
#include "api_faults.h"
#include "core/moment.h"
#include "core/wide_text.h"
#include "crypto/api/encoding.h"
#include "crypto/certificate/certificate.h"
#include "crypto/certificate/certificate_filter.h"
#include "crypto/certificate/certificate_search.h"
#include "crypto/certificate/certificate_store.h"
#include "crypto/certificate/certificate_view.h"
#include "crypto/message/provider_choice.h"

using namespace Corvane;
using namespace Corvane::Test;
using Corvane::detail::CertCustomFilterFn;

namespace {

Bytes pkiFile(const std::string& name) {
    return readTestData("pki/" + name);
}

using Names = std::vector<std::wstring>;

// Wine 8 refuses to set the archive flag, so the test keeps it.
TEST(Certificate, ArchiveFlagIsSetRemovedAndAskedForByFilters) {
    BOOL archived = FALSE;
    const Replaced setting(&::CertSetCertificateContextProperty, [&](auto, DWORD property, auto, auto data) {
        archived = property == CERT_ARCHIVED_PROP_ID && data;
        return TRUE;
    });
    const Replaced getting(&::CertGetCertificateContextProperty, [&](auto, DWORD property, auto, auto) {
        ::SetLastError(static_cast<DWORD>(CRYPT_E_NOT_FOUND));
        return property == CERT_ARCHIVED_PROP_ID && archived;
    });
    const auto certificate = std::make_shared<Certificate>(pkiCertificate("second"));
    for (const bool flag : {true, false}) {
        certificate->setArchived(flag);
        EXPECT_EQ(certificate->getArchived(), flag);
        EXPECT_EQ(CertCustomFilterFn::parse(L"{\"archived\": true}")(certificate), flag);
    }
}

TEST(CertificateFilter, AsksWhatItsKeysSay) {
    const auto signer = std::make_shared<Certificate>(pkiCertificate("signer"));
    for (const auto& row : readTable("pki/filters.txt", 2)) {
        const std::string& outcome = row[0];
        const std::wstring text = multiToWide(CP_UTF8, row[1]);
        SCOPED_TRACE(row[1]);
        if (outcome == "refused") {
            EXPECT_EQ(errorCode([&] { CertCustomFilterFn::parse(text); }), E_CERT_JSON_FILTER.code);
            continue;
        }
        const auto filter = CertCustomFilterFn::parse(text);
        if (outcome.starts_with("My"))
            EXPECT_EQ(toUtf8(filter.storeName) + ' ' + std::to_string(filter.storeLocation), outcome);
        else
            EXPECT_EQ(filter(signer), outcome == "passes");
    }
}

TEST(CertificateStores, OpenFlags) {
    DWORD openFlags = 0;
    const Replaced patch(&::CertOpenStore, [&](auto, auto, auto, DWORD flags, auto) {
        openFlags = flags;
        return nullptr;
    });
    const std::tuple<unsigned, bool, bool, DWORD> rows[] = {{1, true, false, 0x28000},
                                                            {1, false, false, 0x20000},
                                                            {2, true, true, 0x18200},
                                                            {2, false, true, 0x10200}};
    for (const auto& [location, readOnly, archived, flags] : rows) {
        EXPECT_THROW(CertificateStore::open(location, L"My", readOnly, archived), Exception);
        EXPECT_EQ(openFlags, flags);
    }
    // A search leaves archived certificates to themselves, and stops at the first store that does not open.
    EXPECT_EQ(errorCode([] { Crypto::getCertificates(L"{}", false); }), E_CERT_STORE_OPEN.code);
    EXPECT_EQ(openFlags, 0x18000u);
}

TEST(ProviderRecords, FirstInstalledOneForTheKeyIsChosen) {
    std::vector<DWORD> installed;
    const Replaced patch(&::CryptAcquireContextW, [&](HCRYPTPROV* provider, auto, auto, DWORD type, auto) {
        *provider = 0;
        return std::ranges::find(installed, type) != installed.end();
    });
    constexpr DWORD cryptoPro = 75;
    constexpr DWORD infotecs = 2;
    const std::tuple<const char*, std::vector<DWORD>, DWORD> rows[] = {
        {"gost2001", {cryptoPro, infotecs, PROV_RSA_AES}, cryptoPro},
        {"gost2001", {infotecs, PROV_RSA_AES}, infotecs},
        // None: the system tells what is missing.
        {"gost2001", {80, PROV_RSA_AES}, cryptoPro},
        {"signer", {cryptoPro}, PROV_RSA_AES},
    };
    for (const auto& [certificate, present, type] : rows) {
        installed = present;
        EXPECT_EQ(Crypto::getCryptoProvider(pkiCertificate(certificate))->record().type, type);
        EXPECT_EQ(Crypto::getDefaultCryptoProvider()->record().type, present.front());
    }
}

// The names of those who signed.
Names verify(const Bytes& message, const Bytes* data) {
    Names names;
    for (const SharedCertificate& signer :
         Crypto::getDefaultCryptoProvider()->verifyMessageSignature(message, data, {}))
        names.push_back(signer->getName(false));
    return names;
}

// A signer's certificate, or the error for its signature.
struct Answer {
    const char* certificate;
    DWORD error = 0;
};

TEST(CryptoProvider, EverySignerIsAskedFor) {
    std::vector<Answer> answers;
    const auto answerFor = [&](DWORD index, PCCERT_CONTEXT* signer) {
        const Answer answer =
            index < answers.size() ? answers[index] : Answer{nullptr, static_cast<DWORD>(CRYPT_E_NO_SIGNER)};
        *signer = answer.certificate && *answer.certificate
                      ? ::CertDuplicateCertificateContext(pkiCertificate(answer.certificate).context())
                      : nullptr;
        if (answer.error != 0)
            ::SetLastError(answer.error);
        return answer.certificate != nullptr;
    };
    bool isNamed = true;
    const Replaced detached(
        &::CryptVerifyDetachedMessageSignature, [&](PCRYPT_VERIFY_MESSAGE_PARA how, DWORD index, auto, auto,
                                                    auto, auto, auto, PCCERT_CONTEXT* signer) {
            if (isNamed)
                return answerFor(index, signer);
            *signer = how->pfnGetSignerCertificate(how->pvGetArg, messageEncoding, nullptr, nullptr);
            return false;
        });
    const Replaced attached(&::CryptVerifyMessageSignature,
                            [&](auto, DWORD index, auto, auto, auto, DWORD* decoded, auto signer) {
                                EXPECT_NE(decoded, nullptr) << "Windows wants to tell the size";
                                return answerFor(index, signer);
                            });
    // Where the system does not tell how many there are, the end is.
    const Replaced counted(&::CryptGetMessageSignerCount, [](auto...) { return -1L; });
    constexpr auto hashMismatch = static_cast<DWORD>(CRYPT_E_HASH_VALUE);
    constexpr auto notFound = static_cast<DWORD>(CRYPT_E_NOT_FOUND);
    const struct {
        const char* what;
        std::vector<Answer> answers;
        Names signers;
        DWORD error = 0;
    } rows[] = {
        {"two signers", {{"root"}, {"second"}}, {L"Corvane Test Root", L"Second Signer"}},
        {"a failure without a code", {{nullptr}, {"second"}}, {L"Second Signer"}},
        {"nothing but such failures", {{nullptr}, {nullptr}}, {}},
        {"no signer", {}, {}},
        {"the second is bad", {{"root"}, {nullptr, hashMismatch}}, {}, hashMismatch},
        {"success without a certificate", {{"root"}, {""}}, {}, notFound},
    };
    const Bytes document(1);
    for (const auto& row : rows) {
        answers = row.answers;
        for (const Bytes* data : {&document, static_cast<const Bytes*>(nullptr)}) {
            SCOPED_TRACE(std::string(row.what) + (data ? ", detached" : ", attached"));
            Names signers;
            const Failure failure = failureOf([&] {
                ::SetLastError(ERROR_FILE_NOT_FOUND);  // what an earlier call may have left behind
                signers =
                    verify(pkiFile(data ? "detached-two-signers.p7s" : "attached-two-signers.p7s"), data);
            });
            EXPECT_EQ(failure, row.error ? Failure(E_CRYPTO_VERIFY.code, row.error) : Failure());
            EXPECT_EQ(signers, row.signers);
        }
    }
    // As Windows documents it for a detached message without its data: success, though nothing is verified.
    // What only the system can read may have content of its own.
    answers = {{"root"}};
    for (const auto& odd : {std::pair(pkiFile("detached-plain.p7s"), static_cast<const Bytes*>(nullptr)),
                            {Bytes(9), &document}})
        EXPECT_EQ(failureOf([&] { verify(odd.first, odd.second); }),
                  Failure(E_CRYPTO_VERIFY.code, static_cast<DWORD>(CRYPT_E_INVALID_MSG_TYPE)));
    // And for messages that do not name their signer.
    isNamed = false;
    EXPECT_EQ(failureOf([&] { verify(pkiFile("detached-plain.p7s"), &document); }),
              Failure(E_CRYPTO_VERIFY.code, notFound));
}

TEST(CertificateStores, FailuresOfTheSystemAreTold) {
    const auto open = [](bool readOnly) {
        return CertificateStore::open(userStores, L"CorvaneTest", readOnly, false);
    };
    Certificate signer = pkiCertificate("signer");
    const SharedStore store = open(false);
    const detail::CertSelectAllFn all;
    const Bytes text = pkiFile("signer.pem");
    failEachCall({
        {"create", quiet([&] { Certificate::create(text); })},
        {"name", [&] { return toUtf8(signer.getName(false)); }},
        {"subject", [&] { return toUtf8(signer.getSubject(0)); }},
        {"key", quiet([&] { signer.hasPrivateKey(); })},
        {"flag", quiet([&] { signer.getArchived(); })},
        {"hash", quiet([&] { signer.getHash(); })},
        {"responder", quiet([&] { signer.getOnlineCertificateStatusProtocol(); })},
        {"path", quiet([&] { signer.getCertificateChain(); })},
        {"store", quiet([&] { open(true); })},
        {"list", quiet([&] { store->getCertificates(all, false); })},
        {"install", quiet([&] { store->install(signer); })},
        {"uninstall", quiet([&] { Certificate::duplicate(signer.context()).uninstall(); })},
    });
    const Replaced setting(&::CertSetCertificateContextProperty,
                           [](auto...) { return ::SetLastError(denied), FALSE; });
    EXPECT_EQ(failureOf([&] { signer.setArchived(true); }), Failure(E_CERT_SET_PROPERTY.code, denied));
    const Replaced closing(&::CertCloseStore, [](HCERTSTORE, DWORD flags) {
        EXPECT_EQ(flags, 0u) << "forced, the system frees the certificates that others still use";
        return ::SetLastError(denied), FALSE;
    });
    EXPECT_EQ(failureOf([&] { store->close(); }), Failure(E_CERT_STORE_CLOSE.code, denied));
    EXPECT_EQ(errorCode([] { toUtcText(FILETIME{0xFFFFFFFF, 0xFFFFFFFF}); }), 20u) << "beyond the calendar";
}

}  // namespace
