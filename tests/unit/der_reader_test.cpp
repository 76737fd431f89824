#include "asn1/der_reader.h"

#include "asn1/certificate_extensions.h"
#include "binary/hex.h"
#include "support.h"

#include <gtest/gtest.h>

#include <map>

using namespace asn1;
using namespace Corvane::Test;

namespace {

TEST(DerReader, FollowsX690) {
    const std::map<std::string, std::string (*)(DerReader&)> readers{
        {"oid", [](DerReader& r) { return r.readOid(); }},
        {"boolean", [](DerReader& r) { return std::string(r.readBoolean() ? "yes" : "no"); }},
        {"bits", [](DerReader& r) { return std::string(r.readBitString().test(0) ? "yes" : "no"); }},
        {"read oid", [](DerReader& r) { return std::to_string(r.read(tag::oid).size()); }},
        {"skip", [](DerReader& r) { return r.skip(), std::string("skipped"); }},
        {"end", [](DerReader& r) { return r.expectEnd(), std::string("end"); }},
    };
    for (const auto& row : readTable("pki/der.txt", 4)) {
        SCOPED_TRACE(row[0] + ' ' + row[1] + ' ' + row[3]);
        const Corvane::Bytes encoded = Corvane::hexToBin(row[1]);
        DerReader reader{encoded};
        if (row[2] == "refused") {
            EXPECT_THROW(readers.at(row[0])(reader), Asn1Exception);
        } else {
            EXPECT_EQ(readers.at(row[0])(reader), row[2]);
            EXPECT_TRUE(reader.atEnd());
        }
    }
}

TEST(CertificateExtensions, KeyUsageBits) {
    using Names = std::vector<std::string>;
    const auto read = [](std::string_view hex) { return readKeyUsages(Corvane::hexToBin(hex)); };
    EXPECT_EQ(read("030205A0"), (Names{"digitalSignature", "keyEncipherment"}));
    EXPECT_EQ(read("0303070880"), (Names{"decipherOnly", "keyAgreement"}));
    EXPECT_EQ(read("030100"), Names{});
}

TEST(CertificateExtensions, RefusesCertificatesCutOrContinuedAnywhere) {
    Corvane::Bytes bytes = readTestData("pki/signer.der");
    EXPECT_EQ(readExtensions(bytes).size(), 7u);
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_THROW(readExtensions(View(bytes).first(size)), Asn1Exception) << size;
    bytes.push_back(0);
    EXPECT_THROW(readExtensions(bytes), Asn1Exception);
}

}  // namespace
