#include "crypto/certificate.h"

#include "binary/base64.h"
#include "binary/hex.h"
#include "core/json.h"
#include "core/moment.h"
#include "core/text.h"
#include "crypto/certificate_extensions.h"
#include "crypto/certificate_filter.h"
#include "crypto/certificate_json.h"
#include "platform/import_patch.h"
#include "unit/pki.h"

#include <gtest/gtest.h>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

TEST(Certificate, TellsWhatOpenSslTells) {
    for (const auto& row : readTable("pki/facts.txt", 4)) {
        SCOPED_TRACE(row[0]);
        const Certificate certificate = pkiCertificate(row[0]);
        EXPECT_EQ(certificate.getHash(), hexToBin(row[1]));
        EXPECT_EQ(certificate.getSerialNumber(), hexToBin(row[2]));
        EXPECT_EQ(std::to_string(certificate.getPublicKeyLength()), row[3]);
        EXPECT_EQ(certificate.getContent(), pkiFile(row[0] + ".der"));
        EXPECT_EQ(certificate.getVersion(), row[0] == "legacy" ? 1u : 3u);
    }
}

TEST(Certificate, IsCreatedFromTextOnly) {
    const auto base64 = [](const Bytes& bytes) {
        const std::wstring text = binToBase64(bytes, 0);
        return Bytes(text.begin(), text.end());
    };
    const Bytes der = pkiFile("signer.der");
    EXPECT_EQ(Certificate::create(pkiFile("signer.pem")).getContent(), der);
    EXPECT_EQ(Certificate::create(base64(der)).getContent(), der);
    Bytes marked = der;
    marked[0] = 0x1E;
    const struct {
        const char* what;
        Bytes bytes;
        const ErrorDescriptor& error;
    } rows[] = {
        {"DER is taken for text", der, E_CRYPTO_PEM_TO_BYTES},
        {"text outside the alphabet", bytesOf("@@@@"), E_CRYPTO_PEM_TO_BYTES},
        {"Base64 of something else", base64(bytesOf("certificate")), E_CERT_INVALID},
        {"Base64 of a cut certificate", base64(Bytes(der.begin(), der.end() - 1)), E_CERT_INVALID},
        {"0x1E is passed on as encoded", marked, E_CERT_INVALID},
    };
    for (const auto& row : rows)
        EXPECT_EQ(errorCode([&] { Certificate::create(row.bytes); }), row.error.code) << row.what;
    EXPECT_THROW(Certificate::create({}), std::out_of_range);
}

TEST(Certificate, NamesAsText) {
    EXPECT_EQ(pkiCertificate("signer").getRdnValue("no identifier", true), L"");
    constexpr DWORD plain = CERT_X500_NAME_STR | CERT_NAME_STR_NO_QUOTING_FLAG;
    EXPECT_EQ(pkiCertificate("root").getSubject(plain), L"CN=Corvane Test Root, O=Corvane");
    EXPECT_EQ(pkiCertificate("root").getIssuer(plain | CERT_NAME_STR_REVERSE_FLAG),
              L"O=Corvane, CN=Corvane Test Root");
}

// Wine 8 refuses to set the archive flag, so the test keeps it.
bool archived = false;

WINBOOL WINAPI setProperty(PCCERT_CONTEXT, DWORD property, DWORD, const void* data) {
    archived = property == CERT_ARCHIVED_PROP_ID && data;
    return TRUE;
}

WINBOOL WINAPI getProperty(PCCERT_CONTEXT, DWORD property, void*, DWORD*) {
    ::SetLastError(static_cast<DWORD>(CRYPT_E_NOT_FOUND));
    return property == CERT_ARCHIVED_PROP_ID && archived;
}

TEST(Certificate, ArchiveFlagIsSetRemovedAndAskedForByFilters) {
    const ImportPatch setting(&::CertSetCertificateContextProperty, &setProperty);
    const ImportPatch getting(&::CertGetCertificateContextProperty, &getProperty);
    const auto certificate = std::make_shared<Certificate>(pkiCertificate("second"));
    for (const bool flag : {true, false}) {
        certificate->setArchived(flag);
        EXPECT_EQ(certificate->getArchived(), flag);
        const auto* filter = flag ? L"{\"archived\": true}" : L"{\"archived\": false}";
        const auto* other = flag ? L"{\"archived\": false}" : L"{\"archived\": true}";
        EXPECT_TRUE(detail::CertCustomFilterFn::parse(filter)(certificate));
        EXPECT_FALSE(detail::CertCustomFilterFn::parse(other)(certificate));
    }
}

TEST(Certificate, ContainerOfTheAttachedKey) {
    const Certificate tied = pkiSigner("second");
    EXPECT_EQ(parseJson(Crypto::getContainerInfoJson(tied)),
              parseJson(LR"({"providerName": "Microsoft Enhanced RSA and AES Cryptographic Provider",
                             "providerType": 24, "containerName": "corvane-)" +
                        binToHex(tied.getHash()) + L"\"}"));
}

TEST(Certificate, WithoutWhatOthersHave) {
    EXPECT_EQ(pkiCertificate("second").getOnlineCertificateStatusProtocol(), L"");
    EXPECT_EQ(pkiCertificate("legacy").getOnlineCertificateStatusProtocol(), L"");
    const Certificate legacy = pkiCertificate("legacy");
    EXPECT_FALSE(legacy.hasPrivateKey());
    const Certificates chain = legacy.getCertificateChain();
    ASSERT_EQ(chain.size(), 1u);
    EXPECT_EQ(chain[0]->getContent(), legacy.getContent());
}

TEST(Certificate, DescriptionAndExtensionsInJson) {
    for (const auto& row : readTable("pki/json.txt", 3)) {
        const Certificate certificate = pkiCertificate(row[1]);
        const std::wstring json = row[0] == "description" ? Crypto::getCertDescriptionJson(certificate)
                                                          : Crypto::getCertExtensionJson(certificate);
        EXPECT_EQ(parseJson(json), parseJson(fromUtf8(row[2]))) << row[1];
    }
}

TEST(Validity, TimesOutsideOfTheCalendarAreRefused) {
    // 132163592037654321 units of 100 ns after 1601-01-01.
    constexpr FILETIME known{0x33A4DF31, 0x01D58A16};
    EXPECT_EQ(toUtcText(known), L"2019-10-24T02:53:23Z");
    constexpr FILETIME beyond{0xFFFFFFFF, 0xFFFFFFFF};
    EXPECT_EQ(errorCode([&] { toUtcText(beyond); }), 20u);
}

}  // namespace
