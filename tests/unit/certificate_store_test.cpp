#include "crypto/certificate_store.h"

#include "core/text.h"
#include "crypto/certificate_search.h"
#include "crypto/certificate_view.h"
#include "platform/import_patch.h"
#include "unit/dialog_driver.h"
#include "unit/pki.h"

#include <commctrl.h>

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;
using Corvane::detail::CertCustomFilterFn;

namespace {

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

TEST_F(CertificateStoreTest, ReadOnlyAndClosedStoresSaySo) {
    const SharedStore store = open(true);
    EXPECT_EQ(errorCode([&] { store->install(pkiCertificate("root")); }), E_CERT_STORE_INSTALL.code);
    store->close();
    EXPECT_EQ(errorCode([&] { store->close(); }), E_CERT_STORE_NOT_OPENED.code);
    EXPECT_EQ(errorCode([&] { store->getCertificates(detail::CertSelectAllFn(), false); }),
              E_CERT_STORE_NOT_OPENED.code);
    EXPECT_EQ(errorCode([&] { store->install(pkiCertificate("root")); }), E_CERT_STORE_NOT_OPENED.code);
    EXPECT_EQ(store->name(), L"CorvaneTest");
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

}  // namespace
