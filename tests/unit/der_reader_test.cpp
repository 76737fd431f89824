#include "asn1/der_reader.h"

#include "asn1/certificate_extensions.h"
#include "test_data.h"

#include <gtest/gtest.h>

#include <functional>

using namespace asn1;

namespace {

using Bytes = std::vector<std::uint8_t>;

bool fails(const std::function<void()>& action) {
    try {
        action();
    } catch (const Asn1Exception&) {
        return true;
    }
    return false;
}

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
        void (*read)(DerReader&);
    } cases[] = {
        {"no octet at all", {}, [](DerReader& r) { r.skip(); }},
        {"no length", {0x30}, [](DerReader& r) { r.skip(); }},
        {"length beyond the end", {0x30, 0x02, 0x00}, [](DerReader& r) { r.skip(); }},
        {"length octets beyond the end", {0x30, 0x82, 0x01}, [](DerReader& r) { r.skip(); }},
        {"indefinite length", {0x30, 0x80, 0x00, 0x00}, [](DerReader& r) { r.skip(); }},
        {"long form of a short length", {0x04, 0x81, 0x01, 0x00}, [](DerReader& r) { r.skip(); }},
        {"leading zero in a length", {0x04, 0x82, 0x00, 0x80}, [](DerReader& r) { r.skip(); }},
        {"length of five octets", {0x04, 0x85, 1, 0, 0, 0, 0}, [](DerReader& r) { r.skip(); }},
        {"tag above 30", {0x1F, 0x1F, 0x00}, [](DerReader& r) { r.skip(); }},
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
        EXPECT_TRUE(fails([&] {
            DerReader reader{c.encoded};
            c.read(reader);
        })) << c.rule;
    }
}

TEST(CertificateExtensions, KeyUsageBits) {
    using Names = std::vector<std::string>;
    EXPECT_EQ(readKeyUsages(Bytes{0x03, 0x02, 0x05, 0xA0}), (Names{"digitalSignature", "keyEncipherment"}));
    EXPECT_EQ(readKeyUsages(Bytes{0x03, 0x03, 0x07, 0x08, 0x80}), (Names{"decipherOnly", "keyAgreement"}));
    EXPECT_EQ(readKeyUsages(Bytes{0x03, 0x01, 0x00}), Names{});
}

// Every beginning of a certificate is refused, and no change of one octet reads outside of it.
TEST(CertificateExtensions, DamagedCertificates) {
    const Bytes whole = readTestData("pki/signer.der");
    EXPECT_EQ(readExtensions(whole).size(), 7u);
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_TRUE(fails([&] { readExtensions(View(whole).first(size)); })) << size;
    Bytes longer = whole;
    longer.push_back(0);
    EXPECT_TRUE(fails([&] { readExtensions(longer); }));
}

}  // namespace
