// Certificates, their stores and the system's dialogs about them, signatures.
#include "api_faults.h"
#include "binary/hex.h"
#include "core/json.h"
#include "core/moment.h"
#include "core/wide_text.h"
#include "crypto/api/encoding.h"
#include "crypto/certificate/certificate.h"
#include "crypto/certificate/certificate_extensions.h"
#include "crypto/certificate/certificate_filter.h"
#include "crypto/certificate/certificate_json.h"
#include "crypto/certificate/certificate_search.h"
#include "crypto/certificate/certificate_store.h"
#include "crypto/certificate/certificate_view.h"
#include "crypto/message/provider_choice.h"
#include "dialog_driver.h"

#include <commctrl.h>

using namespace Corvane;
using namespace Corvane::Test;
using Corvane::detail::CertCustomFilterFn;

namespace {

Bytes pkiFile(const std::string& name) {
    return readTestData("pki/" + name);
}

Certificate pkiCertificate(const std::string& name) {
    const Bytes der = pkiFile(name + ".der");
    return Certificate(CertificateContext(
        ::CertCreateCertificateContext(X509_ASN_ENCODING, der.data(), static_cast<DWORD>(der.size()))));
}

using Names = std::vector<std::wstring>;

Names namesOf(const Certificates& certificates) {
    Names names;
    for (const SharedCertificate& certificate : certificates)
        names.push_back(certificate->getName(false));
    return names;
}

TEST(Certificate, TellsWhatOpenSslTells) {
    for (const auto& row : readTable("pki/facts.txt", 4)) {
        SCOPED_TRACE(row[0]);
        const Certificate certificate = pkiCertificate(row[0]);
        EXPECT_EQ(certificate.getHash(), hexToBin(row[1]));
        EXPECT_EQ(certificate.getSerialNumber(), hexToBin(row[2]));
        EXPECT_EQ(std::to_string(certificate.getPublicKeyLength()), row[3]);
        EXPECT_EQ(certificate.getContent(), pkiFile(row[0] + ".der"));
        EXPECT_EQ(certificate.getVersion(), row[0] == "legacy" ? 1u : 3u);
    }
}

// Wine 8 refuses to set the archive flag, so the test keeps it.
bool archived = false;

WINBOOL WINAPI setProperty(PCCERT_CONTEXT, DWORD property, DWORD, const void* data) {
    archived = property == CERT_ARCHIVED_PROP_ID && data;
    return TRUE;
}

WINBOOL WINAPI getProperty(PCCERT_CONTEXT, DWORD property, void*, DWORD*) {
    ::SetLastError(static_cast<DWORD>(CRYPT_E_NOT_FOUND));
    return property == CERT_ARCHIVED_PROP_ID && archived;
}

TEST(Certificate, ArchiveFlagIsSetRemovedAndAskedForByFilters) {
    const ImportPatch setting(&::CertSetCertificateContextProperty, &setProperty);
    const ImportPatch getting(&::CertGetCertificateContextProperty, &getProperty);
    const auto certificate = std::make_shared<Certificate>(pkiCertificate("second"));
    for (const bool flag : {true, false}) {
        certificate->setArchived(flag);
        EXPECT_EQ(certificate->getArchived(), flag);
        const auto* filter = flag ? L"{\"archived\": true}" : L"{\"archived\": false}";
        const auto* other = flag ? L"{\"archived\": false}" : L"{\"archived\": true}";
        EXPECT_TRUE(CertCustomFilterFn::parse(filter)(certificate));
        EXPECT_FALSE(CertCustomFilterFn::parse(other)(certificate));
    }
}

TEST(Certificate, DescriptionAndExtensionsInJson) {
    for (const auto& row : readTable("pki/json.txt", 3)) {
        const Certificate certificate = pkiCertificate(row[1]);
        const std::wstring json = row[0] == "description" ? Crypto::getCertDescriptionJson(certificate)
                                                          : Crypto::getCertExtensionJson(certificate);
        EXPECT_EQ(parseJson(json), parseJson(fromUtf8(row[2]))) << row[1];
    }
}

TEST(Validity, TimesOutsideOfTheCalendarAreRefused) {
    // 132163592037654321 units of 100 ns after 1601-01-01.
    constexpr FILETIME known{0x33A4DF31, 0x01D58A16};
    EXPECT_EQ(toUtcText(known), L"2019-10-24T02:53:23Z");
    constexpr FILETIME beyond{0xFFFFFFFF, 0xFFFFFFFF};
    EXPECT_EQ(errorCode([&] { toUtcText(beyond); }), 20u);
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

// A store of the user that belongs to the tests alone.
class CertificateStoreTest : public testing::Test {
protected:
    static constexpr wchar_t root[] = L"Corvane Test Root";
    static constexpr wchar_t query[] = LR"({"storeName": "CorvaneTest", "storeLocation": "user"})";

    CertificateStoreTest() { forget(); }
    ~CertificateStoreTest() override { forget(); }

    static SharedStore open(bool readOnly) {
        return CertificateStore::open(userStores, L"CorvaneTest", readOnly, false);
    }

private:
    // By the registry, where the user's stores lie: Wine 8 keeps there what was deleted from an open store.
    static void forget() {
        ::RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Microsoft\\SystemCertificates\\CorvaneTest");
    }
};

TEST_F(CertificateStoreTest, KeepsWhatWasInstalledInOrder) {
    EXPECT_EQ(errorCode([&] { Crypto::findCertificate(query); }), E_CERT_NOT_FOUND.code);
    EXPECT_TRUE(Crypto::getCertificates(query, false).empty());
    const SharedStore store = open(false);
    EXPECT_EQ(store->install(pkiCertificate("root"))->getContent(), pkiFile("root.der"));
    store->install(pkiCertificate("second"));
    store->install(pkiCertificate("second"));
    const detail::CertSelectAllFn all;
    EXPECT_EQ(store->getCertificates(all, false).size(), 3u);
    store->close();
    // Once more from the registry, where equal ones are one.
    EXPECT_EQ(namesOf(Crypto::getCertificates(query, false)), (Names{root, L"Second Signer"}));
    EXPECT_EQ(namesOf(Crypto::getCertificates(query, true)), Names{root});
    const SharedStore again = open(false);
    again->getCertificates(all, true).front()->uninstall();
    EXPECT_EQ(namesOf(again->getCertificates(all, false)), Names{L"Second Signer"});
}

DWORD closedWith;

BOOL WINAPI recordClose(HCERTSTORE store, DWORD flags) {
    closedWith = flags;
    return systemFunction<decltype(::CertCloseStore)>(L"crypt32", "CertCloseStore")(store, flags);
}

// Forced, the system frees the certificates that others still use; Wine does not.
TEST_F(CertificateStoreTest, ClosingIsNotForced) {
    const SharedStore store = open(true);
    const ImportPatch patch(&::CertCloseStore, &recordClose);
    closedWith = ~DWORD{};
    store->close();
    EXPECT_EQ(closedWith, 0u);
}

// Chooses a line of the dialog's list, wherever in the dialog that is.
void choose(HWND dialog, int line) {
    LVITEMW item{};
    item.state = item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    for (HWND child = ::GetWindow(dialog, GW_CHILD); child; child = ::GetWindow(child, GW_HWNDNEXT))
        ::SendMessageW(child, LVM_SETITEMSTATE, static_cast<WPARAM>(line), reinterpret_cast<LPARAM>(&item));
}

TEST_F(CertificateStoreTest, PickedCertificateIsTheOneChosen) {
    const SharedStore store = open(false);
    for (const char* name : {"root", "second"})
        store->install(pkiCertificate(name));
    const Certificates shown = store->getCertificates(detail::CertSelectAllFn(), false);
    ASSERT_GE(shown.size(), 2u);
    for (int line = 0; line < 2; ++line) {
        const DialogDriver driver([&](HWND dialog) {
            choose(dialog, line);
            ::PostMessageW(dialog, WM_COMMAND, IDOK, 0);
        });
        const SharedCertificate picked = Crypto::selectCertificateFromStore(*store);
        ASSERT_NE(picked, nullptr);
        EXPECT_EQ(picked->getContent(), shown[static_cast<std::size_t>(line)]->getContent());
    }

    const DialogDriver driver([](HWND dialog) { ::PostMessageW(dialog, WM_COMMAND, IDCANCEL, 0); });
    EXPECT_EQ(Crypto::selectCertificateFromStore(L"CorvaneTest", userStores), nullptr);
    EXPECT_EQ(driver.count(), 1);
}

// On 64 bits only: Wine's 32-bit viewer divides by zero in its own code before it shows anything.
#ifdef _WIN64
TEST(CertificateView, ViewerMayBeClosedInEveryWay) {
    const Certificate certificate = pkiCertificate("signer");
    for (const UINT message : {UINT{WM_COMMAND}, UINT{WM_CLOSE}}) {
        const DialogDriver driver([=](HWND dialog) { ::PostMessageW(dialog, message, IDCANCEL, 0); });
        EXPECT_NO_THROW(Crypto::viewCertificate(certificate));
        EXPECT_EQ(driver.count(), 1);
    }
}
#endif

// The flags that the last store was opened with.
DWORD openFlags = 0;

HCERTSTORE WINAPI recordFlags(LPCSTR, DWORD, HCRYPTPROV_LEGACY, DWORD flags, const void*) {
    openFlags = flags;
    return nullptr;
}

TEST(CertificateStores, OpenFlags) {
    const ImportPatch patch(&::CertOpenStore, &recordFlags);
    const struct {
        unsigned location;
        bool readOnly;
        bool archived;
        DWORD flags;
    } rows[] = {
        {1, true, false, 0x28000},
        {1, false, false, 0x20000},
        {2, true, true, 0x18200},
        {2, false, true, 0x10200},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(errorCode([&] { CertificateStore::open(row.location, L"My", row.readOnly, row.archived); }),
                  E_CERT_STORE_OPEN.code);
        EXPECT_EQ(openFlags, row.flags);
    }
    for (const unsigned location : {0u, 3u, 0xFFFFFFFFu})
        EXPECT_THROW(CertificateStore::open(location, L"My", true, false), std::invalid_argument);
    // A search leaves archived certificates to themselves, and stops at the first store that does not open.
    EXPECT_EQ(errorCode([] { Crypto::getCertificates(L"{}", false); }), E_CERT_STORE_OPEN.code);
    EXPECT_EQ(openFlags, 0x18000u);
}

// The types of the providers that are installed.
std::vector<DWORD> installed;

WINBOOL WINAPI openInstalled(HCRYPTPROV* provider, LPCWSTR, LPCWSTR, DWORD type, DWORD) {
    *provider = 0;
    return std::ranges::find(installed, type) != installed.end();
}

TEST(ProviderRecords, FirstInstalledOneForTheKeyIsChosen) {
    const ImportPatch patch(&::CryptAcquireContextW, &openInstalled);
    constexpr DWORD cryptoPro = 75;
    constexpr DWORD infotecs = 2;
    const struct {
        const char* certificate;
        std::vector<DWORD> installed;
        DWORD type;
        const wchar_t* hash;
    } rows[] = {
        {"gost2001", {cryptoPro, infotecs, PROV_RSA_AES}, cryptoPro, L"1.2.643.2.2.9"},
        {"gost2001", {infotecs, PROV_RSA_AES}, infotecs, L"1.2.643.2.2.9"},
        {"gost2001",
         {80, PROV_RSA_AES},
         cryptoPro,
         L"1.2.643.2.2.9"},  // none: the system tells what is missing
        {"gost256", {cryptoPro, 80, 81, PROV_RSA_AES}, 80, L"1.2.643.7.1.1.2.2"},
        {"gost512", {cryptoPro, 80, 81, PROV_RSA_AES}, 81, L"1.2.643.7.1.1.2.3"},
        {"signer", {cryptoPro, 80, PROV_RSA_AES}, PROV_RSA_AES, L"2.16.840.1.101.3.4.2.1"},
        {"signer", {cryptoPro}, PROV_RSA_AES, L"2.16.840.1.101.3.4.2.1"},
    };
    for (const auto& row : rows) {
        installed = row.installed;
        const Crypto::SharedProvider provider = Crypto::getCryptoProvider(pkiCertificate(row.certificate));
        EXPECT_EQ(provider->record().type, row.type) << row.certificate;
        EXPECT_EQ(provider->record().hash, row.hash) << row.certificate;
        // A key of another kind is not signed with what happens to be there.
        EXPECT_EQ(errorCode([] { Crypto::getCryptoProvider(pkiCertificate("curve")); }),
                  E_CRYPTO_UNSUPPORTED_PUBLIC_ALGO.code);
        EXPECT_EQ(Crypto::getDefaultCryptoProvider()->record().type, row.installed.front());
    }
}

// Answers for the signers of a message, one after the other: a certificate, or the error for its signature.
struct Answer {
    const char* certificate;
    DWORD error = 0;
};
std::vector<Answer> answers;

constexpr Answer end{nullptr, static_cast<DWORD>(CRYPT_E_NO_SIGNER)};
// What an earlier call may have left behind.
constexpr DWORD stale = ERROR_FILE_NOT_FOUND;

WINBOOL answerFor(DWORD index, PCCERT_CONTEXT* signer) {
    const Answer answer = index < answers.size() ? answers[index] : end;
    *signer = answer.certificate && *answer.certificate
                  ? ::CertDuplicateCertificateContext(pkiCertificate(answer.certificate).context())
                  : nullptr;
    if (answer.error != 0)
        ::SetLastError(answer.error);
    return answer.certificate != nullptr;
}

WINBOOL WINAPI answerDetached(PCRYPT_VERIFY_MESSAGE_PARA, DWORD index, const BYTE*, DWORD, DWORD,
                              const BYTE**, DWORD*, PCCERT_CONTEXT* signer) {
    return answerFor(index, signer);
}

WINBOOL WINAPI answerAttached(PCRYPT_VERIFY_MESSAGE_PARA, DWORD index, const BYTE*, DWORD, BYTE*,
                              DWORD* decoded, PCCERT_CONTEXT* signer) {
    EXPECT_NE(decoded, nullptr) << "Windows wants to tell the size";
    return answerFor(index, signer);
}

TEST(CryptoProvider, EverySignerIsAskedFor) {
    const ImportPatch detached(&::CryptVerifyDetachedMessageSignature, &answerDetached);
    const ImportPatch attached(&::CryptVerifyMessageSignature, &answerAttached);
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
            const Bytes message = pkiFile(data ? "detached-two-signers.p7s" : "attached-two-signers.p7s");
            Names signers;
            const Failure failure = failureOf([&] {
                ::SetLastError(stale);
                signers =
                    namesOf(Crypto::getDefaultCryptoProvider()->verifyMessageSignature(message, data, {}));
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
        EXPECT_EQ(failureOf([&] {
                      Crypto::getDefaultCryptoProvider()->verifyMessageSignature(odd.first, odd.second, {});
                  }),
                  Failure(E_CRYPTO_VERIFY.code, static_cast<DWORD>(CRYPT_E_INVALID_MSG_TYPE)));
}

WINBOOL WINAPI askForNobody(PCRYPT_VERIFY_MESSAGE_PARA parameters, DWORD, const BYTE*, DWORD, DWORD,
                            const BYTE**, DWORD*, PCCERT_CONTEXT* signer) {
    *signer = parameters->pfnGetSignerCertificate(parameters->pvGetArg, messageEncoding, nullptr, nullptr);
    return FALSE;
}

// As Windows documents it for messages that do not name their signer.
TEST(CryptoProvider, SignerThatIsNotNamedIsNotFound) {
    const ImportPatch patch(&::CryptVerifyDetachedMessageSignature, &askForNobody);
    const Bytes document(1);
    EXPECT_EQ(failureOf([&] {
                  Crypto::getDefaultCryptoProvider()->verifyMessageSignature(pkiFile("detached-plain.p7s"),
                                                                             &document, {});
              }),
              Failure(E_CRYPTO_VERIFY.code, static_cast<DWORD>(CRYPT_E_NOT_FOUND)));
}

// The system's function in question fails so.
template <class Result, class... Arguments>
Result WINAPI refuse(Arguments...) {
    ::SetLastError(denied);
    return Result{};
}

// How `work` fails while calls of `function` do.
template <class Result, class... Arguments, class Work>
Failure failureWithout(Result(WINAPI* function)(Arguments...), Work work) {
    const ImportPatch patch(function, &refuse<Result, Arguments...>);
    return failureOf(work);
}

TEST_F(CertificateStoreTest, FailuresOfTheSystemAreTold) {
    Certificate signer = pkiCertificate("signer");
    const SharedStore store = open(false);
    const detail::CertSelectAllFn all;
    const Bytes text = pkiFile("signer.pem");
    const std::pair<Failure, ErrorDescriptor> rows[] = {
        {failureWithout(&::CertCreateCertificateContext, [&] { Certificate::create(text); }), E_CERT_INVALID},
        {failureWithout(&::CryptStringToBinaryA, [&] { Certificate::create(text); }), E_CRYPTO_PEM_TO_BYTES},
        {failureWithout(&::CertGetNameStringW, [&] { signer.getName(false); }), E_CERT_PROPERTY},
        {failureWithout(&::CertNameToStrW, [&] { signer.getSubject(0); }), E_CERT_PROPERTY},
        {failureWithout(&::CertGetCertificateContextProperty, [&] { signer.hasPrivateKey(); }),
         E_CERT_PROPERTY},
        {failureWithout(&::CertGetCertificateContextProperty, [&] { signer.getArchived(); }),
         E_CERT_PROPERTY},
        {failureWithout(&::CertGetCertificateContextProperty, [&] { signer.getHash(); }), E_CERT_HASH},
        {failureWithout(&::CertSetCertificateContextProperty, [&] { signer.setArchived(true); }),
         E_CERT_SET_PROPERTY},
        {failureWithout(&::CryptDecodeObject, [&] { signer.getOnlineCertificateStatusProtocol(); }),
         E_CERT_EXT_DECODE},
        {failureWithout(&::CertDeleteCertificateFromStore, [&] { signer.uninstall(); }), E_CRYPTO},
        {failureWithout(&::CertGetCertificateChain, [&] { signer.getCertificateChain(); }), E_CERT_GET_CHAIN},
        {failureWithout(&::CertOpenStore, [] { open(true); }), E_CERT_STORE_OPEN},
        {failureWithout(&::CertEnumCertificatesInStore, [&] { store->getCertificates(all, false); }),
         E_CERT_STORE_ENUM},
        {failureWithout(&::CertAddCertificateContextToStore, [&] { store->install(signer); }),
         E_CERT_STORE_INSTALL},
        {failureWithout(&::CertCloseStore, [&] { store->close(); }), E_CERT_STORE_CLOSE},
    };
    for (const auto& [failure, expected] : rows)
        EXPECT_EQ(failure, Failure(expected.code, denied)) << expected.name;
}

TEST(Certificate, UninstallFreesWhatItTookAndNoMore) {
    const Patches patches = countCalls();
    trace = {};
    {
        Certificate certificate = pkiCertificate("second");
        certificate.uninstall();
        EXPECT_EQ(trace.open[contexts], 1);
        EXPECT_EQ(certificate.getName(false), L"Second Signer");
    }
    EXPECT_EQ(trace.open[contexts], 0);
}

}  // namespace
