#include "asn1/pkix/certification_request.h"
#include "binary/base64.h"
#include "binary/hex.h"
#include "core/errors.h"
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

TEST(DistinguishedName, FollowsRfc4514) {
    const std::pair<const wchar_t*, const char*> rows[] = {
        {L"", "3000"},
        // The examples of RFC 4514 4, with the string types of RFC 5280.
        {L"UID=jsmith,DC=example,DC=net",
         "304631133011060A0992268993F22C64011916036E657431173015060A0992268993F22C64011916076578616D706C65311"
         "63014060A0992268993F22C6401010C066A736D697468"},
        {L"CN=Before\\0dAfter", "30173115301306035504030C0C4265666F72650D4166746572"},
        {L"1.3.6.1.4.1.1466.0=#04024869", "30123110300E06082B060104018B3A0004024869"},
        {L"CN=Lu\\C4\\8Di\\C4\\87", "30123110300E06035504030C074C75C48D69C487"},
        // Spaces count where a backslash says so, or inside.
        {L"CN= \\ a b\\  ", "3010310E300C06035504030C052061206220"},
        {L"CN=a\\=b=c", "3010310E300C06035504030C05613D623D63"},
    };
    for (const auto& [text, hex] : rows) {
        SCOPED_TRACE(toUtf8(text));
        EXPECT_EQ(hexOf(encodeDistinguishedName(text)), hex);
    }
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

TEST(DistinguishedName, TellsWhereAndWhy) {
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        {L"Иванов", L"символ 1: ожидался знак равенства"},
        {L"CN=a,XX=b", L"символ 6: неизвестный атрибут"},
        {L"CN=a,1.40.1=b", L"символ 6: неизвестный атрибут"},
        {L"CN=a,", L"символ 6: после запятой ничего нет"},
        {L"CN=", L"символ 4: пустое значение"},
        {L"CN=a,,C=RU", L"символ 6: ожидался знак равенства"},
        {L"C=Россия", L"символ 3: значение содержит недопустимые символы"},
        {L"INN=77O1234567", L"символ 5: значение содержит недопустимые символы"},
        {L"E=ящик@example.org", L"символ 3: значение содержит недопустимые символы"},
        {L"CN=\\D0", L"символ 4: значение содержит недопустимые символы"},
        {L"CN=a\\00b", L"символ 4: значение содержит недопустимые символы"},
        {L"O=ООО \"Ромашка\"", L"символ 7: перед этим символом нужна обратная косая черта"},
        {L"CN=a;C=RU", L"символ 5: перед этим символом нужна обратная косая черта"},
        {L"CN=\\z", L"символ 6: неверная последовательность после обратной косой черты"},
        {L"CN=a\\", L"символ 6: неожиданный конец"},
        {L"CN=\"a", L"символ 6: неожиданный конец"},
        {L"CN=\"a\"b", L"символ 7: ожидалась запятая"},
        {L"CN=#0C", L"символ 4: значение не в кодировке DER"},
        {L"CN=#0C0161FF", L"символ 4: значение не в кодировке DER"},
        {L"CN=#0", L"символ 4: неверное шестнадцатеричное значение"},
    };
    for (const auto& [text, details] : rows) {
        try {
            encodeDistinguishedName(text);
            ADD_FAILURE() << toUtf8(text);
        } catch (const NameTextException& exception) {
            EXPECT_EQ(toUtf8(exception.details()), toUtf8(details)) << toUtf8(text);
            EXPECT_EQ(exception.code(), E_DISTINGUISHED_NAME.code);
        }
    }
}

TEST(IpAddress, BothForms) {
    const std::pair<const char*, const char*> rows[] = {
        {"192.0.2.1", "C0000201"},
        {"2001:db8::1", "20010DB8000000000000000000000001"},
        {"::", "00000000000000000000000000000000"},
        {"::ffff:192.0.2.1", "00000000000000000000FFFFC0000201"},
        {"1:2:3:4:5:6:7:8", "00010002000300040005000600070008"},
    };
    for (const auto& [text, hex] : rows)
        EXPECT_EQ(hexOf(parseIpAddress(text)), hex) << text;
    for (const char* text : {"", "1.2.3", "1.2.3.4.5", "256.1.1.1", "01.2.3.4", "1.2.3.-4", "1.2.3.4 ", ":",
                             ":::", "1::2::3", "1:2:3:4:5:6:7", "1:2:3:4:5:6:7:8:9", "1:2:3:4::5:6:7:8",
                             "12345::", "g::", "1.2.3.4::", "::1.2.3.4:5", "1:"})
        EXPECT_EQ(hexOf(parseIpAddress(text)), "") << text;
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

TEST(RequestExtensions, OnlyWhatIsTold) {
    // otherName of RFC 5280 4.2.1.6, by hand.
    EXPECT_EQ(
        hexOf(encodeExtensionsJson(LR"({"subjectAltName": {"critical": true, "values": [{"upn": "ab"}]}})")),
        "302230200603551D110101FF04163014A012060A2B060104018237140203A0040C026162");
    for (const wchar_t* text : {
             L"",
             L"[]",
             L"{}",
             L"{\"other\": []}",
             L"{\"keyusage\": []}",
             L"{\"keyUsage\": []}",
             L"{\"keyUsage\": \"digitalSignature\"}",
             L"{\"keyUsage\": [\"signature\"]}",
             L"{\"keyUsage\": [1]}",
             L"{\"keyUsage\": {\"critical\": 1, \"values\": [\"cRLSign\"]}}",
             L"{\"keyUsage\": {\"value\": [\"crlSign\"]}}",
             L"{\"extendedKeyUsage\": [\"client\"]}",
             L"{\"policies\": [\"1\"]}",
             L"{\"subjectAltName\": [\"a@b\"]}",
             L"{\"subjectAltName\": [{\"email\": \"a@b\", \"dns\": \"c\"}]}",
             L"{\"subjectAltName\": [{\"mail\": \"a\"}]}",
             L"{\"subjectAltName\": [{\"email\": \"ящик@b\"}]}",
             L"{\"subjectAltName\": [{\"ip\": \"1\"}]}",
             L"{\"subjectAltName\": [{\"dns\": \"a.example\\u0000.b\"}]}",
             L"{\"subjectAltName\": [{\"upn\": \"\"}]}",
             L"{\"subjectAltName\": [{\"upn\": \"a\\u0000\"}]}",
             L"{\"subjectAltName\": [{\"upn\": \"\\udc00\"}]}",
             L"{\"other\": [{\"oid\": \"1.2.3\"}]}",
             L"{\"other\": [{\"oid\": \"1.2.3\", \"value\": \"DAPQ\"}]}",
             L"{\"policies\": [\"1.2.3\"], \"other\": [{\"oid\": \"2.5.29.32\", \"value\": \"BQA=\"}]}",
         })
        EXPECT_EQ(errorCode([&] { encodeExtensionsJson(text); }), E_REQUEST_EXTENSIONS.code) << toUtf8(text);
    try {
        encodeExtensionsJson(L"{\"ключ\": []}");
        ADD_FAILURE();
    } catch (const JsonException& exception) {
        EXPECT_EQ(exception.details(), L"unknown member: ключ");
    }
    EXPECT_EQ(errorCode([] { encodeExtensionsJson(L"{\"subjectAltName\": [{\"directoryName\": \"a\"}]}"); }),
              E_DISTINGUISHED_NAME.code);
}

TEST(CertificationRequestJson, TellsWhatIsAskedFor) {
    const Json::Value json =
        describeRequest(decodeCertificationRequest(readTestData("requests/gost2001.der")));
    EXPECT_EQ(json["subject"].asString(), toUtf8(subject));
    EXPECT_EQ(json["publicKeyAlgorithm"].asString(), "1.2.643.2.2.19");
    EXPECT_EQ(json["signatureAlgorithm"].asString(), "1.2.643.2.2.3");
    EXPECT_EQ(json["keyUsages"].size(), 4u);
    EXPECT_EQ(json["extendedKeyUsages"][2].asString(), "1.2.643.2.2.34.6");
    EXPECT_EQ(json["policies"][0].asString(), "1.2.643.100.113.1");
    EXPECT_EQ(json["extensions"][4]["oid"].asString(), "1.2.643.100.111");
    EXPECT_FALSE(json["extensions"][4]["critical"].asBool());
    EXPECT_EQ(json["attributes"][0]["oid"].asString(), "1.2.840.113549.1.9.7");
    EXPECT_EQ(json["attributes"][0]["values"][0].asString(), "DAZzZWNyZXQ=");
    EXPECT_EQ(errorCode([] { decodeCertificationRequest(readTestData("pki/signer.der")); }),
              E_CERTIFICATION_REQUEST.code);
}

}  // namespace
