#include "crypto/certificate.h"

#include "binary/hex.h"
#include "core/json.h"
#include "core/moment.h"
#include "crypto/certificate_extensions.h"
#include "crypto/certificate_json.h"
#include "platform/archive_property.h"
#include "unit/pki.h"

#include <json/value.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

const std::wstring cyrillicName = L"Иванов Иван";

std::string utf8Json(const std::wstring& text) {
    return std::string(text.begin(), text.end());
}

// The code of the descriptor that `action` fails with; 0 where it does not fail.
std::uint32_t codeOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Exception& exception) {
        return exception.code();
    }
    return 0;
}

// Base64 in one line, by the system.
Bytes base64Of(const Bytes& bytes) {
    DWORD size = 0;
    constexpr DWORD form = CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF;
    ::CryptBinaryToStringA(bytes.data(), static_cast<DWORD>(bytes.size()), form, nullptr, &size);
    std::string text(size, '\0');
    ::CryptBinaryToStringA(bytes.data(), static_cast<DWORD>(bytes.size()), form, text.data(), &size);
    text.resize(size);
    return Bytes(text.begin(), text.end());
}

TEST(Certificate, TellsWhatOpenSslTells) {
    const std::vector<Facts> all = pkiFacts();
    ASSERT_EQ(all.size(), 5u);
    for (const Facts& facts : all) {
        const Certificate certificate = pkiCertificate(facts.name);
        EXPECT_EQ(certificate.getHash(), hexToBin(facts.hash)) << facts.name;
        EXPECT_EQ(certificate.getSerialNumber(), hexToBin(facts.serial)) << facts.name;
        EXPECT_EQ(certificate.getPublicKeyLength(), facts.bits) << facts.name;
        EXPECT_EQ(certificate.getContent(), pkiFile(facts.name + ".der")) << facts.name;
        EXPECT_EQ(certificate.getPublicKeyAlgorithm(), L"1.2.840.113549.1.1.1") << facts.name;
    }
}

TEST(Certificate, IsCreatedFromText) {
    const Bytes der = pkiFile("signer.der");
    const Bytes pem = pkiFile("signer.pem");
    EXPECT_EQ(Certificate::create(pem).getContent(), der);
    EXPECT_EQ(Certificate::create(base64Of(der)).getContent(), der);
}

TEST(Certificate, RejectsWhatIsNoText) {
    const Bytes der = pkiFile("signer.der");
    Bytes marked = der;
    marked[0] = 0x1E;
    const std::string word = "Y2VydGlmaWNhdGU=";  // Base64 of "certificate"
    const struct {
        const char* what;
        Bytes bytes;
        std::uint32_t code;
    } cases[] = {
        {"DER is taken for text", der, 326},
        {"text outside the alphabet", {'@', '@', '@', '@'}, 326},
        {"Base64 of something else", {word.begin(), word.end()}, 606},
        {"Base64 of a cut certificate", base64Of(Bytes(der.begin(), der.end() - 1)), 606},
        {"0x1E is passed on as encoded", marked, 606},
    };
    for (const auto& c : cases)
        EXPECT_EQ(codeOf([&] { Certificate::create(c.bytes); }), c.code) << c.what;
    EXPECT_THROW(Certificate::create({}), std::out_of_range);
}

TEST(Certificate, NamesOfSubjectAndIssuer) {
    const Certificate signer = pkiCertificate("signer");
    EXPECT_EQ(signer.getName(false), cyrillicName);
    EXPECT_EQ(signer.getName(true), L"Corvane Test Intermediate");
    EXPECT_EQ(signer.getRdnValue("2.5.4.3", true), L"Corvane Test Intermediate");
    EXPECT_EQ(signer.getRdnValue("2.5.4.3", false), cyrillicName);
    EXPECT_EQ(signer.getSubjectAttribute("2.5.4.10"), L"ООО \"Ромашка\", Тула");
    EXPECT_EQ(signer.getRdnValue("2.5.4.11", false), L"");
    EXPECT_EQ(signer.getRdnValue("no identifier", true), L"");

    constexpr DWORD reversed = CERT_X500_NAME_STR | CERT_NAME_STR_REVERSE_FLAG;
    const Certificate root = pkiCertificate("root");
    EXPECT_EQ(root.getSubject(CERT_X500_NAME_STR | CERT_NAME_STR_NO_QUOTING_FLAG),
              L"CN=Corvane Test Root, O=Corvane");
    EXPECT_EQ(root.getIssuer(reversed | CERT_NAME_STR_NO_QUOTING_FLAG), L"O=Corvane, CN=Corvane Test Root");
}

TEST(Certificate, VersionAndAlgorithmOfOtherKinds) {
    EXPECT_EQ(pkiCertificate("signer").getVersion(), 3u);
    EXPECT_EQ(pkiCertificate("legacy").getVersion(), 1u);
    EXPECT_EQ(pkiCertificate("gost2001").getPublicKeyAlgorithm(), L"1.2.643.2.2.19");
    EXPECT_EQ(pkiCertificate("gost256").getPublicKeyAlgorithm(), L"1.2.643.7.1.1.1.1");
    EXPECT_EQ(pkiCertificate("gost512").getPublicKeyAlgorithm(), L"1.2.643.7.1.1.1.2");
}

TEST(Certificate, ArchiveFlagIsSetAndRemoved) {
    const ArchiveProperty standIn;
    Certificate certificate = pkiCertificate("second");
    const Certificate copy = certificate;
    EXPECT_FALSE(certificate.getArchived());
    certificate.setArchived(true);
    EXPECT_TRUE(copy.getArchived());
    certificate.setArchived(false);
    EXPECT_FALSE(copy.getArchived());
}

TEST(Certificate, ContainerOfTheAttachedKey) {
    const Certificate bare = pkiCertificate("second");
    EXPECT_FALSE(bare.hasPrivateKey());
    EXPECT_EQ(codeOf([&] { Crypto::getContainerInfoJson(bare); }), 502u);

    const Certificate tied = pkiSigner("second");
    EXPECT_TRUE(tied.hasPrivateKey());
    const Json::Value info = parseJson(Crypto::getContainerInfoJson(tied));
    EXPECT_EQ(info["containerName"].asString(), "corvane-" + utf8Json(thumbprint(tied.context())));
    EXPECT_EQ(info["providerName"].asString(), "Microsoft Enhanced RSA and AES Cryptographic Provider");
    EXPECT_EQ(info["providerType"].asInt(), 24);
}

TEST(Certificate, OcspAddressIsTheFirstOne) {
    EXPECT_EQ(pkiCertificate("signer").getOnlineCertificateStatusProtocol(), L"http://ocsp.example/first");
    EXPECT_EQ(pkiCertificate("second").getOnlineCertificateStatusProtocol(), L"");
    EXPECT_EQ(pkiCertificate("legacy").getOnlineCertificateStatusProtocol(), L"");
}

TEST(Certificate, ChainBeginsWithTheCertificate) {
    const Certificate legacy = pkiCertificate("legacy");
    const Certificates chain = legacy.getCertificateChain();
    ASSERT_EQ(chain.size(), 1u);
    EXPECT_EQ(chain[0]->getContent(), legacy.getContent());
}

TEST(Certificate, DescriptionHasEveryKey) {
    const Json::Value description = parseJson(Crypto::getCertDescriptionJson(pkiCertificate("signer")));
    const Facts facts = pkiFacts()[2];
    const std::pair<const char*, std::string> expected[] = {
        {"CN", "Иванов Иван"},
        {"Hash", facts.hash},
        {"IssuerCN", "Corvane Test Intermediate"},
        {"ON", "ООО \"Ромашка\", Тула"},
        {"RN", "RN-1"},
        {"SN", "Иванов"},
        {"SerialNumber", facts.serial},
        {"UN", "1-FE"},
        {"ValidFrom", "2020-01-01T00:00:00Z"},
        {"ValidTo", "2049-12-31T23:59:59Z"},
        {"WRO", "WRO-1"},
    };
    EXPECT_EQ(description.size(), std::size(expected));
    for (const auto& [key, value] : expected)
        EXPECT_EQ(description[key].asString(), value) << key;
}

TEST(Certificate, ExtensionsAreThreeLists) {
    const struct {
        const char* name;
        const wchar_t* json;
    } cases[] = {
        {"signer",
         LR"({"keyUsages": ["dataEncipherment", "digitalSignature", "nonRepudiation"],
          "extendedKeyUsages": ["1.3.6.1.5.5.7.3.2", "1.3.6.1.5.5.7.3.4", "1.2.643.2.2.34.6"],
          "policies": ["1.2.643.100.113.1", "1.2.643.100.113.2"]})"},
        {"second",
         LR"({"keyUsages": ["digitalSignature", "encipherOnly", "keyAgreement"],
          "extendedKeyUsages": [], "policies": []})"},
        {"root", LR"({"keyUsages": ["crlSign", "keyCertSign"], "extendedKeyUsages": [], "policies": []})"},
        {"legacy", LR"({"keyUsages": [], "extendedKeyUsages": [], "policies": []})"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(parseJson(Crypto::getCertExtensionJson(pkiCertificate(c.name))), parseJson(c.json))
            << c.name;
}

TEST(Validity, TimesOutsideOfTheCalendarAreRefused) {
    // 132163592037654321 units of 100 ns after 1601-01-01.
    constexpr FILETIME known{0x33A4DF31, 0x01D58A16};
    EXPECT_EQ(toUtcText(known), L"2019-10-24T02:53:23Z");
    constexpr FILETIME beyond{0xFFFFFFFF, 0xFFFFFFFF};
    EXPECT_EQ(codeOf([&] { toUtcText(beyond); }), 20u);
}

}  // namespace
