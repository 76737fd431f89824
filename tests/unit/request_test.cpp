#include "asn1/pkix/certification_request.h"
#include "core/json.h"
#include "core/utf8.h"
#include "crypto/request/distinguished_name.h"
#include "crypto/request/extensions_json.h"
#include "crypto/request/ip_address.h"
#include "crypto/request/request_json.h"
#include "support.h"

#include <json/value.h>

#include <chrono>

using namespace Corvane;
using namespace Corvane::Crypto;
using namespace Corvane::Test;

namespace {

// The subject of requests/rsa.der as OpenSSL shows it ("-nameopt RFC2253,-esc_msb,utf8"), with the two
// attributes that stand beside each other in the order of their encoding.
constexpr wchar_t subject[] =
    L"1.2.3.4=#0C03782079,emailAddress=i@example.org,SNILS=12345678901+INN=001234567890,OGRN=1234567890123,"
    L"CN=Иванов\\, Иван,OU=\\#1,O=ООО \\\"Ромашка\\\" \\+ Ко,L=Москва,ST=77,STREET=Ленина 1,DC=example,C=RU";

asn1::CertificationRequest request() {
    return asn1::decodeRequest(readTestData("requests/rsa.der"));
}

TEST(DistinguishedName, IsWhatOpenSslMakesOfIt) {
    EXPECT_EQ(encodeDistinguishedName(subject), request().info.subject);
    EXPECT_EQ(distinguishedNameText(asn1::decodeName(request().info.subject)), subject);
    // The same in other words.
    EXPECT_EQ(
        encodeDistinguishedName(
            L" oid.1.2.3.4 = x y , e=i@example.org, 1.2.643.3.131.1.1=001234567890 + СНИЛС=12345678901,ogrn="
            L"1234567890123, cn=\"Иванов, Иван\",2.5.4.11=\\231,O=\"ООО \"\"Ромашка\"\" + "
            L"\\D0\\9A\\d0\\be\",l=Москва,"
            L"S=77,street=Ленина 1,dc=example,C=RU"),
        request().info.subject);
}

// A page's text of a megabyte does not stop the page: one that takes the square of it would be at it for
// minutes.
TEST(DistinguishedName, TakesTimeInProportion) {
    std::wstring text = L"CN=a";
    for (int i = 1; i < 200'000; ++i)
        text += L",CN=a";
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(parseDistinguishedName(text).size(), 200'000u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
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

TEST(RequestExtensions, AreWhatOpenSslMakesOfThem) {
    const Bytes asked = request().info.attributes.at(1).values.at(0);
    EXPECT_EQ(encodeExtensionsJson(
                  LR"({"keyUsage": ["digitalSignature", "nonRepudiation", "keyAgreement", "decipherOnly"],
                       "extendedKeyUsage": ["clientAuth", "emailProtection", "1.2.643.2.2.34.6"],
                       "policies": {"values": ["1.2.643.100.113.1", "1.3.6.1.4.1.11129.2.5.1"]},
                       "subjectAltName": [{"email": "ivan@example.org"}, {"dns": "example.org"},
                           {"uri": "https://example.org/a"}, {"ip": "192.0.2.1"}, {"ip": "2001:db8::1"},
                           {"registeredId": "1.2.3"}, {"directoryName": "CN=Ivanov,C=RU"}],
                       "other": [{"oid": "1.2.643.100.111", "value": "DBDQodGA0LXQtNGB0YLQstC+"}]})"),
              asked);
}

TEST(CertificationRequestJson, TellsWhatIsAskedFor) {
    const Json::Value json =
        describeRequest(decodeCertificationRequest(readTestData("requests/gost2001.der")));
    EXPECT_EQ(json["subject"].asString(), toUtf8(subject));
    EXPECT_EQ(json["publicKeyAlgorithm"].asString(), "1.2.643.2.2.19");
    EXPECT_EQ(json["signatureAlgorithm"].asString(), "1.2.643.2.2.3");
    EXPECT_EQ(json["keyUsages"],
              parseJson(LR"(["decipherOnly", "digitalSignature", "keyAgreement", "nonRepudiation"])"));
    EXPECT_EQ(json["extendedKeyUsages"][2].asString(), "1.2.643.2.2.34.6");
    EXPECT_EQ(json["policies"][0].asString(), "1.2.643.100.113.1");
    EXPECT_TRUE(json["extensions"][0]["critical"].asBool());
    EXPECT_EQ(
        json["extensions"][4],
        parseJson(LR"({"oid": "1.2.643.100.111", "critical": false, "value": "DBDQodGA0LXQtNGB0YLQstC+"})"));
    EXPECT_EQ(json["attributes"][0],
              parseJson(LR"({"oid": "1.2.840.113549.1.9.7", "values": ["DAZzZWNyZXQ="]})"));
    EXPECT_EQ(errorCode([] { decodeCertificationRequest(readTestData("pki/signer.der")); }),
              E_CERTIFICATION_REQUEST.code);
}

}  // namespace
