#include "crypto/certificate_store.h"

#include "core/exception.h"
#include "crypto/certificate_search.h"
#include "platform/import_patch.h"
#include "unit/pki.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

std::uint32_t codeOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Exception& exception) {
        return exception.code();
    }
    return 0;
}

std::vector<std::wstring> namesOf(const Certificates& certificates) {
    std::vector<std::wstring> names;
    for (const SharedCertificate& certificate : certificates)
        names.push_back(certificate->getName(false));
    return names;
}

// A store of the user that belongs to the tests alone.
class CertificateStoreTest : public testing::Test {
protected:
    static constexpr wchar_t storeName[] = L"CorvaneTest";
    static constexpr wchar_t query[] = LR"({"storeName": "CorvaneTest", "storeLocation": "user"})";

    CertificateStoreTest() { forget(); }
    ~CertificateStoreTest() override { forget(); }

    static SharedStore openForWriting() {
        return CertificateStore::open(userStores, storeName, false, false);
    }

    // Puts certificates of the test data into the store.
    static void fill(std::initializer_list<const char*> names) {
        const SharedStore store = openForWriting();
        for (const char* name : names)
            store->install(pkiCertificate(name));
        store->close();
    }

private:
    // By the registry, where the user's stores lie: Wine 8 keeps there what was deleted from an open store.
    static void forget() {
        ::RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\Microsoft\\SystemCertificates\\CorvaneTest");
    }
};

TEST_F(CertificateStoreTest, KeepsWhatWasInstalledInOrder) {
    fill({"root", "second"});
    const Certificates found = Crypto::getCertificates(query, false);
    EXPECT_EQ(namesOf(found), (std::vector<std::wstring>{L"Corvane Test Root", L"Second Signer"}));
    EXPECT_EQ(namesOf(Crypto::getCertificates(query, true)),
              (std::vector<std::wstring>{L"Corvane Test Root"}));
}

TEST_F(CertificateStoreTest, InstallsTheSameCertificateTwice) {
    const SharedStore store = openForWriting();
    const SharedCertificate first = store->install(pkiCertificate("root"));
    store->install(pkiCertificate("root"));
    EXPECT_EQ(store->getCertificates(detail::CertSelectAllFn(), false).size(), 2u);
    EXPECT_EQ(first->getContent(), pkiFile("root.der"));

    first->uninstall();
    EXPECT_EQ(store->getCertificates(detail::CertSelectAllFn(), false).size(), 1u);
}

TEST_F(CertificateStoreTest, ReadOnlyStoreTakesNothing) {
    const SharedStore store = CertificateStore::open(userStores, storeName, true, false);
    EXPECT_EQ(codeOf([&] { store->install(pkiCertificate("root")); }), 611u);
}

TEST_F(CertificateStoreTest, ClosedStoreSaysSo) {
    const SharedStore store = openForWriting();
    store->close();
    EXPECT_EQ(codeOf([&] { store->close(); }), 604u);
    EXPECT_EQ(codeOf([&] { store->getCertificates(detail::CertSelectAllFn(), false); }), 604u);
    EXPECT_EQ(codeOf([&] { store->install(pkiCertificate("root")); }), 604u);
    EXPECT_EQ(store->name(), storeName);
    EXPECT_EQ(store->location(), userStores);
}

TEST_F(CertificateStoreTest, SearchThatFindsNothing) {
    EXPECT_EQ(codeOf([&] { Crypto::findCertificate(query); }), 607u);
    EXPECT_TRUE(Crypto::getCertificates(query, false).empty());
    EXPECT_EQ(codeOf([] { Crypto::findCertificate(LR"({"hash": "0g"})"); }), 608u);
}

TEST(CertificateStores, StandardOnesOfBothLocations) {
    const Stores stores = CertificateStore::openStandard(0, true, false);
    const std::pair<unsigned, const wchar_t*> expected[] = {
        {userStores, L"My"},          {userStores, L"Root"},           {userStores, L"Ca"},
        {userStores, L"AddressBook"}, {machineStores, L"My"},          {machineStores, L"Root"},
        {machineStores, L"Ca"},       {machineStores, L"AddressBook"},
    };
    ASSERT_EQ(stores.size(), std::size(expected));
    for (std::size_t i = 0; i < stores.size(); ++i) {
        EXPECT_EQ(stores[i]->location(), expected[i].first);
        EXPECT_EQ(stores[i]->name(), expected[i].second);
    }
    EXPECT_EQ(CertificateStore::openStandard(machineStores, true, false).front()->location(), machineStores);
}

// The flags that the last store was opened with.
DWORD openFlags = 0;

HCERTSTORE WINAPI recordFlags(LPCSTR, DWORD, HCRYPTPROV_LEGACY, DWORD flags, const void*) {
    openFlags = flags;
    return nullptr;
}

TEST(CertificateStores, OpenFlags) {
    const ImportPatch patch(::GetModuleHandleW(nullptr), "CertOpenStore", &recordFlags);
    const struct {
        unsigned location;
        bool readOnly;
        bool archived;
        DWORD flags;
    } cases[] = {
        {1, true, false, 0x28000},
        {1, false, false, 0x20000},
        {2, true, true, 0x18200},
        {2, false, true, 0x10200},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(codeOf([&] { CertificateStore::open(c.location, L"My", c.readOnly, c.archived); }), 603u);
        EXPECT_EQ(openFlags, c.flags);
    }
    // A search leaves archived certificates to themselves, and stops at the first store that does not open.
    EXPECT_EQ(codeOf([] { Crypto::getCertificates(L"{}", false); }), 603u);
    EXPECT_EQ(openFlags, 0x18000u);
}

TEST(CertificateStores, OtherLocationsAreInvalid) {
    for (const unsigned location : {0u, 3u, 0xFFFFFFFFu})
        EXPECT_THROW(CertificateStore::open(location, L"My", true, false), std::invalid_argument);
    EXPECT_THROW(CertificateStore::openStandard(3, true, false), std::invalid_argument);
}

}  // namespace
