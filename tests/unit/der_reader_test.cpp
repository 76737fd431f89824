#include "asn1/der_reader.h"

#include "asn1/certificate_extensions.h"
#include "support.h"

#include <gtest/gtest.h>

using namespace asn1;
using Corvane::Bytes;

namespace {

TEST(DerReader, ObjectIdentifiers) {
    const struct {
        Bytes encoded;
        const char* text;
    } cases[] = {
        {{0x06, 0x01, 0x00}, "0.0"},
        {{0x06, 0x01, 0x27}, "0.39"},
        {{0x06, 0x01, 0x28}, "1.0"},
        {{0x06, 0x01, 0x4F}, "1.39"},
        {{0x06, 0x01, 0x50}, "2.0"},
        {{0x06, 0x03, 0x88, 0x37, 0x03}, "2.999.3"},  // X.690 8.19.5
        {{0x06, 0x06, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D}, "1.2.840.113549"},
        // 2.25 and a UUID of 128 one bits (X.667)
        {{0x06, 0x14, 0x69, 0x83, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
          0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F},
         "2.25.340282366920938463463374607431768211455"},
    };
    for (const auto& c : cases) {
        DerReader reader{c.encoded};
        EXPECT_EQ(reader.readOid(), c.text);
        EXPECT_TRUE(reader.atEnd());
    }
}

TEST(DerReader, RefusesWhatIsNotDer) {
    const struct {
        const char* rule;
        Bytes encoded;
        void (*read)(DerReader&) = [](DerReader& r) { r.skip(); };
    } cases[] = {
        {"no octet at all", {}},
        {"no length", {0x30}},
        {"length beyond the end", {0x30, 0x02, 0x00}},
        {"length octets beyond the end", {0x30, 0x82, 0x01}},
        {"indefinite length", {0x30, 0x80, 0x00, 0x00}},
        {"long form of a short length", {0x04, 0x81, 0x01, 0x00}},
        {"leading zero in a length", {0x04, 0x82, 0x00, 0x80}},
        {"length of five octets", {0x04, 0x85, 1, 0, 0, 0, 0}},
        {"tag above 30", {0x1F, 0x1F, 0x00}},
        {"another type", {0x04, 0x00}, [](DerReader& r) { r.read(tag::oid); }},
        {"something left over", {0x05, 0x00}, [](DerReader& r) { r.expectEnd(); }},
        {"BOOLEAN 1", {0x01, 0x01, 0x01}, [](DerReader& r) { r.readBoolean(); }},
        {"BOOLEAN of two octets", {0x01, 0x02, 0xFF, 0xFF}, [](DerReader& r) { r.readBoolean(); }},
        {"empty OBJECT IDENTIFIER", {0x06, 0x00}, [](DerReader& r) { r.readOid(); }},
        {"OBJECT IDENTIFIER cut short", {0x06, 0x01, 0x88}, [](DerReader& r) { r.readOid(); }},
        {"arc with a leading zero", {0x06, 0x03, 0x2A, 0x80, 0x01}, [](DerReader& r) { r.readOid(); }},
        {"BIT STRING without its first octet", {0x03, 0x00}, [](DerReader& r) { r.readBitString(); }},
        {"eight unused bits", {0x03, 0x02, 0x08, 0x00}, [](DerReader& r) { r.readBitString(); }},
        {"unused bits of nothing", {0x03, 0x01, 0x01}, [](DerReader& r) { r.readBitString(); }},
        {"unused bit that is set", {0x03, 0x02, 0x01, 0x01}, [](DerReader& r) { r.readBitString(); }},
    };
    for (const auto& c : cases) {
        DerReader reader{c.encoded};
        EXPECT_THROW(c.read(reader), Asn1Exception) << c.rule;
    }
}

TEST(CertificateExtensions, KeyUsageBits) {
    using Names = std::vector<std::string>;
    EXPECT_EQ(readKeyUsages(Bytes{0x03, 0x02, 0x05, 0xA0}), (Names{"digitalSignature", "keyEncipherment"}));
    EXPECT_EQ(readKeyUsages(Bytes{0x03, 0x03, 0x07, 0x08, 0x80}), (Names{"decipherOnly", "keyAgreement"}));
    EXPECT_EQ(readKeyUsages(Bytes{0x03, 0x01, 0x00}), Names{});
}

TEST(CertificateExtensions, RefusesCertificatesCutOrContinuedAnywhere) {
    Bytes bytes = Corvane::Test::readTestData("pki/signer.der");
    EXPECT_EQ(readExtensions(bytes).size(), 7u);
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_THROW(readExtensions(View(bytes).first(size)), Asn1Exception) << size;
    bytes.push_back(0);
    EXPECT_THROW(readExtensions(bytes), Asn1Exception);
}

}  // namespace
