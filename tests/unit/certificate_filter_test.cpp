#include "crypto/certificate_filter.h"

#include "platform/archive_property.h"
#include "unit/pki.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;
using Corvane::detail::CertCustomFilterFn;

namespace {

TEST(CertificateFilter, AsksWhatItsKeysSay) {
    const ArchiveProperty standIn;
    const Facts facts = pkiFacts()[2];  // signer
    const auto signer = std::make_shared<Certificate>(pkiCertificate("signer"));
    const std::wstring hash = wide(facts.hash);
    std::wstring lowerHash = hash;
    ::CharLowerBuffW(lowerHash.data(), static_cast<DWORD>(lowerHash.size()));
    const std::wstring serial = wide(facts.serial);
    const struct {
        std::wstring text;
        bool accepts;
    } rows[] = {
        {L"", true},
        {L"no JSON at all", true},
        {L"[\"name\"]", true},
        {L"{\"unknown\": 5, \"name\": null}", true},
        {L"{\"name\": \"Иванов Иван\"}", true},
        {L"{\"name\": \"иванов иван\"}", false},
        {L"{\"name\": \"Иванов\"}", false},
        {L"{\"hash\": \"" + hash + L"\"}", true},
        {L"{\"hash\": \"" + lowerHash + L"\"}", true},
        {L"{\"hash\": \"" + hash.substr(2) + L"\"}", false},
        {L"{\"hash\": \"\"}", true},
        {L"{\"serialNumber\": \"" + serial + L"\"}", true},
        {L"{\"serialNumber\": \"00" + serial + L"\"}", false},
        {L"{\"serialNumber\": \"" + serial + L"\", \"hash\": \"00\"}", false},
        {L"{\"hasPrivateKeyOnly\": false}", true},
        {L"{\"hasPrivateKeyOnly\": true}", false},
        {L"{\"archived\": false}", true},
        {L"{\"archived\": true}", false},
        {L"{\"storeName\": \"Other\", \"storeLocation\": 1}", true},
    };
    for (const auto& row : rows)
        EXPECT_EQ(CertCustomFilterFn::parse(row.text)(signer), row.accepts)
            << testing::PrintToString(row.text);

    signer->setArchived(true);
    EXPECT_TRUE(CertCustomFilterFn::parse(L"{\"archived\": true}")(signer));
    EXPECT_FALSE(CertCustomFilterFn::parse(L"{\"archived\": false}")(signer));
}

TEST(CertificateFilter, StoresAreKept) {
    const std::pair<const wchar_t*, unsigned> rows[] = {
        {LR"({"storeName": "My", "storeLocation": "user"})", 2},
        {LR"({"storeName": "My", "storeLocation": "machine"})", 1},
        {LR"({"storeName": "My", "storeLocation": 2})", 2},
        {LR"({"storeName": "My", "storeLocation": 1})", 1},
        {LR"({"storeName": "My"})", 0},
    };
    for (const auto& [text, location] : rows) {
        const auto filter = CertCustomFilterFn::parse(text);
        EXPECT_EQ(filter.storeName, L"My");
        EXPECT_EQ(filter.storeLocation, location);
    }
}

TEST(CertificateFilter, RefusesValuesOfTheWrongKind) {
    const char* const rows[] = {
        R"("hash": "0g")",
        R"("hash": "0")",
        R"("hash": 12)",
        R"("serialNumber": "xy")",
        R"("serialNumber": true)",
        R"("name": 5)",
        R"("name": ["a"])",
        R"("storeName": {})",
        R"("storeLocation": 3)",
        R"("storeLocation": 0)",
        R"("storeLocation": -1)",
        R"("storeLocation": 1.5)",
        R"("storeLocation": true)",
        R"("storeLocation": "User")",
        R"("hasPrivateKeyOnly": "true")",
        R"("archived": 1)",
    };
    for (const char* row : rows)
        EXPECT_EQ(errorCode([&] { CertCustomFilterFn::parse(L"{" + wide(row) + L"}"); }),
                  E_CERT_JSON_FILTER.code)
            << row;
}

}  // namespace
