#include "asn1/encoders/der_writer.h"
#include "asn1/encoders/object_identifier.h"
#include "asn1/pkix/certificate_fields.h"
#include "asn1/pkix/certification_request.h"
#include "asn1/pkix/extensions.h"
#include "asn1/pkix/name.h"
#include "binary/hex.h"
#include "support.h"

using namespace asn1;
using namespace Corvane::Test;
using Corvane::hexToBin;

namespace {

Bytes toBytes(View view) {
    return {view.begin(), view.end()};
}

// The same table that the reader is held to, the other way round.
TEST(DerWriter, IdentifiersOfX690) {
    unsigned written = 0;
    for (const auto& row : readTable("pki/ber.txt", 5)) {
        if (row[0] != "oid" || row[2] == "refused")
            continue;
        EXPECT_EQ(hexOf(DerWriter().oid(row[2]).bytes()), row[1]);
        ++written;
    }
    EXPECT_GT(written, 5u);
    for (const char* text :
         {"",     "1",     ".",    "1.",   ".1",     "1..2", "1.2.", "3.1",  "10.1", "0.40",
          "1.40", "1.100", "01.2", "1.02", "1.2.00", "1.2a", "1.-2", "1.2 ", " 1.2", "1,2"})
        EXPECT_FALSE(isOid(text)) << text;
    std::string arcs = "1.2";
    for (int i = 0; i < 127; ++i)
        arcs += ".1";
    EXPECT_TRUE(isOid(arcs)) << "128 octets";
    EXPECT_FALSE(isOid(arcs + ".1"));
    EXPECT_FALSE(isOid("2." + std::string(100000, '9')));
}

// Two's complement in as few octets as can be (X.690 8.3), lengths likewise (10.1).
TEST(DerWriter, NumbersAndLengths) {
    const std::pair<std::int64_t, const char*> rows[] = {
        {0, "020100"},
        {127, "02017F"},
        {128, "02020080"},
        {256, "02020100"},
        {-1, "0201FF"},
        {-128, "020180"},
        {-129, "0202FF7F"},
        {0x7FFFFFFF, "02047FFFFFFF"},
        {INT64_MIN, "02088000000000000000"},
    };
    for (const auto& [number, hex] : rows)
        EXPECT_EQ(hexOf(DerWriter().integer(number).bytes()), hex);
    EXPECT_EQ(hexOf(DerWriter().unsignedInteger({}).bytes()), "020100");
    EXPECT_EQ(hexOf(DerWriter().unsignedInteger(hexToBin("000080")).bytes()), "02020080");
    for (const auto& [size, header] :
         {std::pair{127u, "047F"}, {128u, "048180"}, {256u, "04820100"}, {65536u, "0483010000"}})
        EXPECT_EQ(hexOf(DerWriter().octetString(Bytes(size)).bytes()).substr(0, std::string(header).size()),
                  header);
}

TEST(DerWriter, BitsStringsAndSets) {
    EXPECT_EQ(hexOf(DerWriter().namedBits(0).bytes()), "030100") << "X.690 11.2.2";
    EXPECT_EQ(hexOf(DerWriter().namedBits(1 << 0 | 1 << 2).bytes()), "030205A0");
    EXPECT_EQ(hexOf(DerWriter().namedBits(1 << 8).bytes()), "0303070080");
    EXPECT_EQ(hexOf(DerWriter().bitString(hexToBin("FF"), 3).bytes()), "030203F8") << "X.690 11.2.1";
    EXPECT_THROW(DerWriter().bitString({}, 1), Asn1Exception);
    EXPECT_THROW(DerWriter().bitString(hexToBin("FF"), 8), Asn1Exception);
    EXPECT_EQ(hexOf(DerWriter().setOf({hexToBin("020102"), hexToBin("0500"), hexToBin("020101")}).bytes()),
              "31080201010201020500");
    const struct {
        std::uint8_t type;
        const char* good;
        const char* bad;
    } rows[] = {
        {tag::printableString, "Az09 '()+,-./:=?", "*"}, {tag::printableString, "", "@"},
        {tag::numericString, "0123 456", "1a"},          {tag::ia5String, "a@b_*\x7F", "\xD0\x98"},
        {tag::utf8String, "\xD0\x98", "\xD0"},
    };
    for (const auto& row : rows) {
        EXPECT_NO_THROW(DerWriter().text(row.type, row.good)) << row.good;
        EXPECT_THROW(DerWriter().text(row.type, row.bad), Asn1Exception) << row.bad;
    }
    DerWriter nested;
    nested.sequence([](DerWriter& outer) {
        outer.boolean(true).nest(tag::context(0), [](DerWriter& inner) { inner.null(); });
    });
    EXPECT_EQ(hexOf(nested.bytes()), "30070101FFA0020500");
}

// What OpenSSL made is read, and written again without a difference.
TEST(CertificationRequest, ComesBackAsItWas) {
    for (const char* file : {"requests/rsa.der", "requests/gost2001.der"}) {
        SCOPED_TRACE(file);
        const Bytes der = readTestData(file);
        const CertificationRequest request = decodeRequest(der);
        EXPECT_EQ(encodeRequest(request), der);
        const Name name = decodeName(request.info.subject);
        EXPECT_EQ(encodeName(name), request.info.subject);
        ASSERT_EQ(name.size(), 12u);
        EXPECT_EQ(name[9].size(), 2u);
        EXPECT_EQ(name[9][0].oid, "1.2.643.100.3");
        EXPECT_EQ(hexOf(name[0][0].value), "13025255");
        ASSERT_EQ(request.info.attributes.size(), 2u);
        EXPECT_EQ(request.info.attributes[1].oid, extensionRequestOid);
        const Bytes& asked = request.info.attributes[1].values.at(0);
        const std::vector<Extension> extensions = decodeExtensions(asked);
        EXPECT_EQ(extensions.size(), 5u);
        EXPECT_TRUE(extensions[0].critical);
        EXPECT_EQ(encodeExtensions(extensions), asked);
        for (std::size_t size = 0; size < der.size(); ++size)
            EXPECT_THROW(decodeRequest(View(der).first(size)), Asn1Exception) << size;
    }
    const CertificationRequest gost = decodeRequest(readTestData("requests/gost2001.der"));
    EXPECT_EQ(gost.info.publicKey.algorithm.oid, "1.2.643.2.2.19");
    EXPECT_EQ(hexOf(gost.info.publicKey.algorithm.parameters), "301206072A85030202230106072A850302021E01");
    EXPECT_EQ(gost.info.publicKey.key.size(), 66u) << "an OCTET STRING of 64 octets";
    EXPECT_EQ(gost.signature.size(), 64u);
}

TEST(CertificationRequest, OnlyDerIsRead) {
    EXPECT_THROW(decodeName(hexToBin("300C310A3008060355040613025255"
                                     "00")),
                 Asn1Exception)
        << "something behind it";
    EXPECT_THROW(decodeName(hexToBin("30123110"
                                     "3006060255040C00"
                                     "3006060255030C00")),
                 Asn1Exception)
        << "order";
    EXPECT_EQ(decodeName(hexToBin("30123110"
                                  "3006060255030C00"
                                  "3006060255040C00"))
                  .at(0)
                  .size(),
              2u);
    EXPECT_EQ(decodeName(hexToBin("3000")).size(), 0u);
    EXPECT_THROW(decodeExtensions(hexToBin("3000")), Asn1Exception) << "RFC 5280: at least one";
    EXPECT_THROW(decodeExtensions(hexToBin("300C300A0602550F0101000401AA")), Asn1Exception)
        << "FALSE is the default";
    EXPECT_TRUE(decodeExtensions(hexToBin("300C300A0602550F0101FF0401AA")).at(0).critical);
    EXPECT_THROW(decodeAttribute(hexToBin("30060602550F3100")), Asn1Exception) << "no value";
    EXPECT_EQ(decodeAttribute(hexToBin("30080602550F31020500")).values.size(), 1u);
    EXPECT_THROW(decodePublicKeyInfo(hexToBin("300A300406025501030201FE")), Asn1Exception) << "seven bits";
    EXPECT_EQ(decodePublicKeyInfo(hexToBin("300A300406025501030200FE")).key, hexToBin("FE"));
}

TEST(CertificateFields, AreThoseOfTheEncoding) {
    const Bytes der = readTestData("pki/signer.der");
    const CertificateFields fields = readCertificateFields(der);
    const auto& facts = readTable("pki/facts.txt", 4);
    const auto row = std::ranges::find_if(facts, [](const auto& cells) { return cells[0] == "signer"; });
    ASSERT_NE(row, facts.end());
    const std::string serial = hexOf(fields.serialNumber);
    EXPECT_EQ(serial.substr(serial.size() - row->at(2).size()), row->at(2));
    EXPECT_EQ(toBytes(readCertificateFields(readTestData("pki/intermediate.der")).subject),
              toBytes(fields.issuer));
    EXPECT_EQ(encodeName(decodeName(fields.subject)), toBytes(fields.subject));
    EXPECT_EQ(decodePublicKeyInfo(fields.publicKeyInfo).algorithm.oid, "1.2.840.113549.1.1.1");
}

}  // namespace
