// Certificates, their stores and the system's dialogs about them, signatures.
#include "binary/hex.h"
#include "core/json.h"
#include "core/moment.h"
#include "core/text.h"
#include "crypto/certificate.h"
#include "crypto/certificate_extensions.h"
#include "crypto/certificate_filter.h"
#include "crypto/certificate_json.h"
#include "crypto/certificate_search.h"
#include "crypto/certificate_store.h"
#include "crypto/certificate_view.h"
#include "crypto/crypto_api_provider.h"
#include "dialog_driver.h"
#include "platform/import_patch.h"
#include "support.h"

#include <commctrl.h>

#include <gtest/gtest.h>

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

TEST_F(CertificateStoreTest, AClosedStoreSaysSo) {
    const SharedStore store = open(true);
    store->close();
    EXPECT_EQ(errorCode([&] { store->close(); }), E_CERT_STORE_NOT_OPENED.code);
    EXPECT_EQ(errorCode([&] { store->getCertificates(detail::CertSelectAllFn(), false); }),
              E_CERT_STORE_NOT_OPENED.code);
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

TEST(CertificateStores, StandardOnesOfBothLocations) {
    std::vector<std::pair<unsigned, std::wstring>> opened;
    for (const SharedStore& store : CertificateStore::openStandard(0, true, false))
        opened.emplace_back(store->location(), store->name());
    std::vector<std::pair<unsigned, std::wstring>> expected;
    for (const unsigned location : {userStores, machineStores}) {
        for (const wchar_t* name : {L"My", L"Root", L"Ca", L"AddressBook"})
            expected.emplace_back(location, name);
    }
    EXPECT_EQ(opened, expected);
    EXPECT_EQ(CertificateStore::openStandard(machineStores, true, false).front()->location(), machineStores);
    for (const unsigned location : {0u, 3u, 0xFFFFFFFFu})
        EXPECT_THROW(CertificateStore::open(location, L"My", true, false), std::invalid_argument);
    EXPECT_THROW(CertificateStore::openStandard(3, true, false), std::invalid_argument);
}

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
    // A search leaves archived certificates to themselves, and stops at the first store that does not open.
    EXPECT_EQ(errorCode([] { Crypto::getCertificates(L"{}", false); }), E_CERT_STORE_OPEN.code);
    EXPECT_EQ(openFlags, 0x18000u);
}

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
    std::vector<DWORD> types;
    for (const ProviderRecord& record : providerRecords())
        types.push_back(record.type);
    EXPECT_EQ(types, (std::vector<DWORD>{75, 80, 2, 81, 24}));
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

TEST(CryptoProvider, SignersAreGatheredToTheLast) {
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
    const Bytes document(1);
    const auto verify = [&] {
        return Crypto::getDefaultCryptoProvider()->verifyMessageSignature(Bytes(100), &document, {});
    };
    for (const auto& row : rows) {
        answers = row.answers;
        EXPECT_EQ(namesOf(verify()), row.signers) << row.what;
    }
    answers = {{"root"}, {nullptr, static_cast<DWORD>(CRYPT_E_HASH_VALUE)}, end};
    EXPECT_EQ(failureOf(verify),
              Failure(E_CRYPTO_VERIFY.code, static_cast<std::uint32_t>(CRYPT_E_HASH_VALUE)));
}

}  // namespace
