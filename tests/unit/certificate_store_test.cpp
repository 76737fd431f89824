#include "crypto/certificate_store.h"

#include "crypto/certificate_search.h"
#include "platform/import_patch.h"
#include "unit/pki.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

// A store of the user that belongs to the tests alone.
class CertificateStoreTest : public testing::Test {
protected:
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
    store->close();
    EXPECT_EQ(namesOf(Crypto::getCertificates(query, false)),
              (Names{L"Corvane Test Root", L"Second Signer", L"Second Signer"}));
    EXPECT_EQ(namesOf(Crypto::getCertificates(query, true)), Names{L"Corvane Test Root"});
    EXPECT_EQ(Crypto::findCertificate(query)->getName(false), L"Corvane Test Root");
}

TEST_F(CertificateStoreTest, WhatIsUninstalledIsGone) {
    const SharedStore store = open(false);
    const SharedCertificate certificate = store->install(pkiCertificate("root"));
    store->install(pkiCertificate("second"));
    certificate->uninstall();
    EXPECT_EQ(namesOf(store->getCertificates(detail::CertSelectAllFn(), false)), Names{L"Second Signer"});
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
