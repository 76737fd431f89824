#include "crypto/certificate_filter.h"

#include "core/exception.h"
#include "platform/archive_property.h"
#include "unit/pki.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;
using Corvane::detail::CertCustomFilterFn;

namespace {

std::wstring wide(const std::string& text) {
    return std::wstring(text.begin(), text.end());
}

std::string lower(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

TEST(CertificateFilter, AsksWhatItsKeysSay) {
    const ArchiveProperty standIn;
    const Facts facts = pkiFacts()[2];  // signer
    const auto signer = std::make_shared<Certificate>(pkiCertificate("signer"));
    const std::wstring hash = wide(facts.hash);
    const std::wstring serial = wide(facts.serial);
    const struct {
        std::wstring text;
        bool accepts;
    } cases[] = {
        {L"", true},
        {L"{}", true},
        {L"no JSON at all", true},
        {L"[\"name\"]", true},
        {L"{\"unknown\": 5, \"name\": null}", true},
        {L"{\"name\": \"Иванов Иван\"}", true},
        {L"{\"name\": \"иванов иван\"}", false},
        {L"{\"name\": \"Иванов\"}", false},
        {L"{\"hash\": \"" + hash + L"\"}", true},
        {L"{\"hash\": \"" + wide(lower(facts.hash)) + L"\"}", true},
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
    for (const auto& c : cases)
        EXPECT_EQ(CertCustomFilterFn::parse(c.text)(signer), c.accepts)
            << std::string(c.text.begin(), c.text.end());

    signer->setArchived(true);
    EXPECT_TRUE(CertCustomFilterFn::parse(L"{\"archived\": true}")(signer));
    EXPECT_FALSE(CertCustomFilterFn::parse(L"{\"archived\": false}")(signer));
}

TEST(CertificateFilter, StoresAreKept) {
    const struct {
        const wchar_t* text;
        unsigned location;
    } cases[] = {
        {L"{\"storeName\": \"My\", \"storeLocation\": \"user\"}", 2},
        {L"{\"storeName\": \"My\", \"storeLocation\": \"machine\"}", 1},
        {L"{\"storeName\": \"My\", \"storeLocation\": 2}", 2},
        {L"{\"storeName\": \"My\", \"storeLocation\": 1}", 1},
        {L"{\"storeName\": \"My\"}", 0},
    };
    for (const auto& c : cases) {
        const auto filter = CertCustomFilterFn::parse(c.text);
        EXPECT_EQ(filter.storeName, L"My");
        EXPECT_EQ(filter.storeLocation, c.location);
    }
}

TEST(CertificateFilter, RefusesValuesOfTheWrongKind) {
    const char* const cases[] = {
        R"({"hash": "0g"})",
        R"({"hash": "0"})",
        R"({"hash": 12})",
        R"({"serialNumber": "xy"})",
        R"({"serialNumber": true})",
        R"({"name": 5})",
        R"({"name": ["a"]})",
        R"({"storeName": {}})",
        R"({"storeLocation": 3})",
        R"({"storeLocation": 0})",
        R"({"storeLocation": -1})",
        R"({"storeLocation": 1.5})",
        R"({"storeLocation": "User"})",
        R"({"storeLocation": true})",
        R"({"hasPrivateKeyOnly": "true"})",
        R"({"archived": 1})",
    };
    for (const char* text : cases) {
        try {
            CertCustomFilterFn::parse(wide(text));
            ADD_FAILURE() << text;
        } catch (const Exception& exception) {
            EXPECT_EQ(exception.code(), E_CERT_JSON_FILTER.code) << text;
        }
    }
}

}  // namespace
