#include "asn1/decoders/signed_data.h"
#include "asn1/decoders/x509_extensions.h"
#include "asn1/encoders/der_writer.h"
#include "asn1/pkix/certification_request.h"
#include "asn1/pkix/extensions.h"
#include "asn1/pkix/name.h"
#include "core/json.h"
#include "core/utf8.h"
#include "crypto/request/distinguished_name.h"
#include "crypto/request/extensions_json.h"
#include "crypto/request/ip_address.h"
#include "crypto/request/request_json.h"
#include "support.h"

#include <json/value.h>

#include <map>

using namespace asn1;
using namespace Corvane;
using namespace Corvane::Crypto;
using namespace Corvane::Test;

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
                // There is one way to write them.
                EXPECT_TRUE(row[0] != "oid" || DerWriter().oid(outcome).bytes() == encoded);
            }
        }
    }
}

// What is accepted is written again without a difference; it is refused when it is cut anywhere, as is what
// stands beside it.
TEST(CertificationRequest, OnlyDerIsReadAndComesBackAsItWas) {
    const std::map<std::string, Bytes (*)(View)> ways{
        {"name", [](View der) { return encodeName(decodeName(der)); }},
        {"extensions", [](View der) { return encodeExtensions(decodeExtensions(der)); }},
        {"attribute", [](View der) { return encodeAttribute(decodeAttribute(der)); }},
        {"key", [](View der) { return encodePublicKeyInfo(decodePublicKeyInfo(der)); }},
        {"request", [](View der) { return encodeRequest(decodeRequest(der)); }},
        {"certificate", [](View der) { return readExtensions(der), Bytes(der.begin(), der.end()); }},
    };
    for (const auto& row : readTable("requests/der.txt", 4)) {
        SCOPED_TRACE(row[0] + ' ' + row[1] + ' ' + row[3]);
        const auto again = ways.at(row[0]);
        const Bytes good = row[1].ends_with(".der") ? readTestData(row[1]) : hexToBin(row[1]);
        EXPECT_EQ(hexOf(again(good)), hexOf(good));
        for (std::size_t size = 0; size < good.size(); ++size)
            EXPECT_THROW(again(View(good).first(size)), Asn1Exception) << size;
        EXPECT_THROW(again(hexToBin(row[2])), Asn1Exception);
    }
}

TEST(SignedData, AnEmptyPlaceHoldsNoContent) {
    // The place of the content, with nothing in it: of a length of none, and ended at once (X.690 8.1.3.6).
    for (const char* empty :
         {"302506092A864886F70D010702A01830160201013100300D06092A864886F70D010701A0003100",
          "302706092A864886F70D010702A01A30180201013100300F06092A864886F70D010701A0800000"
          "3100"})
        EXPECT_FALSE(hasContent(hexToBin(std::string_view(empty)))) << empty;
}

// A text becomes bytes, or a number of an error, with its details if they are asked for.
std::string outcomeOf(const std::string& kind, const std::string& text, bool withDetails) {
    const std::wstring given = fromUtf8(text);
    try {
        return hexOf(kind == "name" ? encodeDistinguishedName(given)
                     : kind == "ip" ? parseIpAddress(text)
                                    : encodeExtensionsJson(given));
    } catch (const CustomException& exception) {
        return std::to_string(exception.code()) + (withDetails ? ' ' + toUtf8(exception.details()) : "");
    }
}

TEST(RequestTexts, BecomeDerOrAreRefused) {
    for (const auto& row : readTable("requests/texts.txt", 3))
        EXPECT_EQ(outcomeOf(row[0], row[1], row[2].size() > 3), row[2]) << row[0] << ' ' << row[1];
}

// gost2001.json is what `openssl asn1parse` shows of it.
TEST(CertificationRequestJson, TellsWhatIsAskedFor) {
    EXPECT_EQ(describeRequest(decodeCertificationRequest(readTestData("requests/gost2001.der"))),
              parseJson(fromUtf8(readTestText("requests/gost2001.json"))));
    EXPECT_EQ(errorCode([] { decodeCertificationRequest(readTestData("pki/signer.der")); }),
              E_CERTIFICATION_REQUEST.code);
}

}  // namespace
