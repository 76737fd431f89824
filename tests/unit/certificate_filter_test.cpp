#include "crypto/certificate_filter.h"

#include "core/text.h"
#include "platform/archive_property.h"
#include "unit/pki.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;
using Corvane::detail::CertCustomFilterFn;

namespace {

TEST(CertificateFilter, AsksWhatItsKeysSay) {
    const ArchiveProperty standIn;
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
    signer->setArchived(true);
    EXPECT_TRUE(CertCustomFilterFn::parse(L"{\"archived\": true}")(signer));
    EXPECT_FALSE(CertCustomFilterFn::parse(L"{\"archived\": false}")(signer));
}

}  // namespace
