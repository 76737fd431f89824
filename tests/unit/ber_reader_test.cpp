#include "asn1/decoders/ber_reader.h"

#include "asn1/decoders/signed_data.h"
#include "asn1/decoders/x509_extensions.h"
#include "binary/hex.h"
#include "support.h"

#include <map>

using namespace asn1;
using namespace Corvane::Test;
using Corvane::hexToBin;

namespace {

std::string bitsOf(const BitString& bits) {
    std::string text;
    for (std::size_t i = 0; i < bits.size(); ++i)
        text += bits.test(i) ? '1' : '0';
    return text;
}

TEST(BerReader, FollowsX690) {
    Bytes joined;
    const std::map<std::string, std::function<std::string(BerReader&)>> readers{
        {"oid", [](BerReader& r) { return r.readOid(); }},
        {"boolean", [](BerReader& r) { return std::string(r.readBoolean() ? "yes" : "no"); }},
        {"bits", [&](BerReader& r) { return bitsOf(r.readBitString(joined)); }},
        {"octets", [&](BerReader& r) { return hexOf(r.readOctetString(joined)); }},
        {"sequence", [](BerReader& r) { return hexOf(r.read(tag::sequence)); }},
        {"skip", [](BerReader& r) { return r.skip(), std::string("skipped"); }},
        {"end", [](BerReader& r) { return r.expectEnd(), std::string("end"); }},
    };
    for (const auto& row : readTable("pki/ber.txt", 5)) {
        const Bytes encoded = hexToBin(row[1]);
        for (const auto rules : {Rules::der, Rules::ber}) {
            SCOPED_TRACE(row[0] + ' ' + row[1] + (rules == Rules::der ? " DER " : " BER ") + row[4]);
            BerReader reader(encoded, rules);
            const std::string& outcome = row[rules == Rules::der ? 2 : 3];
            if (outcome == "refused") {
                EXPECT_THROW(readers.at(row[0])(reader), Asn1Exception);
            } else {
                EXPECT_EQ(readers.at(row[0])(reader), outcome);
                EXPECT_TRUE(reader.atEnd());
            }
        }
    }
}

Bytes repeated(std::string_view before, std::string_view middle, std::string_view after, std::size_t times) {
    std::string text;
    for (std::size_t i = 0; i < times; ++i)
        text += before;
    text += middle;
    for (std::size_t i = 0; i < times; ++i)
        text += after;
    return hexToBin(text);
}

TEST(BerReader, LimitsBindForeignInput) {
    Bytes joined;
    for (const std::size_t depth : {1u, 64u, 65u, 1000u, 100000u}) {
        const Bytes octets = repeated("2480", "0401AA", "0000", depth);
        const Bytes values = repeated("3080", "", "0000", depth);
        BerReader string(octets, Rules::ber);
        BerReader list(values, Rules::ber);
        if (depth <= maxNesting) {
            EXPECT_EQ(hexOf(string.readOctetString(joined)), "AA");
            EXPECT_NO_THROW(list.skip());
        } else {
            EXPECT_THROW(string.readOctetString(joined), Asn1Exception) << depth;
            EXPECT_THROW(list.skip(), Asn1Exception) << depth;
        }
    }
}

TEST(CertificateExtensions, KeyUsageBits) {
    using Names = std::vector<std::string>;
    const auto read = [](std::string_view hex) { return readKeyUsages(hexToBin(hex)); };
    EXPECT_EQ(read("030205A0"), (Names{"digitalSignature", "keyEncipherment"}));
    EXPECT_EQ(read("0303070880"), (Names{"decipherOnly", "keyAgreement"}));
    EXPECT_EQ(read("030100"), Names{});
}

TEST(CertificateExtensions, RefusesCertificatesCutAnywhere) {
    Bytes bytes = readTestData("pki/signer.der");
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_THROW(readExtensions(View(bytes).first(size)), Asn1Exception) << size;
    bytes.push_back(0);
    EXPECT_EQ(readExtensions(bytes).size(), 7u) << "what follows is not of the certificate";
}

// What OpenSSL made: with "-nodetach" the content is in it.
TEST(SignedData, TellsWhetherTheContentIsInside) {
    for (const char* name : {"attached-plain", "attached-attributes", "attached-ber"})
        EXPECT_TRUE(hasContent(readTestData("pki/" + std::string(name) + ".p7s"))) << name;
    for (const char* name : {"detached-plain", "detached-two-signers", "no-signers"})
        EXPECT_FALSE(hasContent(readTestData("pki/" + std::string(name) + ".p7s"))) << name;
    // The place of the content, with nothing in it: of a length of none, and ended at once (X.690 8.1.3.6).
    for (const std::string content :
         {"300d06092a864886f70d010701a000", "300f06092a864886f70d010701a0800000"}) {
        const std::string end = content + "3100";
        const auto sized = [](std::string tag, const std::string& body) {
            return tag.append(hexOf({{static_cast<std::uint8_t>(body.size() / 2)}})).append(body);
        };
        const std::string inner = sized("a0", sized("30", "0201013100" + end));
        EXPECT_FALSE(hasContent(hexToBin(sized("30", "06092a864886f70d010702" + inner)))) << content;
    }
    EXPECT_THROW(hasContent(readTestData("pki/signer.der")), Asn1Exception);
}

}  // namespace
