// Renewal requests: what is asked of the system's objects, and in which order.
#include "com/enroll/certificate_request.h"
#include "core/system_exception.h"
#include "core/wide_text.h"
#include "crypto/certificate/certificate.h"
#include "key_container.h"
#include "platform/enroll/recorder.h"
#include "support.h"

using namespace Corvane;
using namespace Corvane::Test;

namespace {

class Renewal : public testing::Test {
protected:
    void SetUp() override {
        ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        for (const Platform::RecordedClass& recorded : Platform::recordedClasses) {
            IClassFactory* factory = Platform::makeRecordingFactory(recorded, recorder_);
            DWORD cookie = 0;
            ASSERT_HRESULT_SUCCEEDED(::CoRegisterClassObject(recorded.clsid, factory, CLSCTX_INPROC_SERVER,
                                                             REGCLS_MULTIPLEUSE, &cookie));
            factory->Release();
            cookies_.push_back(cookie);
        }
    }
    void TearDown() override {
        for (const DWORD cookie : cookies_)
            ::CoRevokeClassObject(cookie);
        ::CoUninitialize();
    }

    // The answer, with the calls before it.
    std::vector<std::string> renew(unsigned major, bool isPkcs7, const Certificate& certificate) {
        notes_.clear();
        const std::wstring answer = createCertificateRequest(major)->getRenewalRequest(isPkcs7, certificate);
        notes_.push_back(toUtf8(answer));
        return notes_;
    }

    // For each of the calls that are made: what it is told as when it alone fails.
    std::vector<std::string> namesOfFailures(unsigned major, bool isPkcs7, const Certificate& certificate) {
        const std::size_t all = renew(major, isPkcs7, certificate).size() - 1;
        std::vector<std::string> names;
        for (failing_ = 1; failing_ <= all; ++failing_) {
            notes_.clear();
            try {
                createCertificateRequest(major)->getRenewalRequest(isPkcs7, certificate);
                names.emplace_back("nothing");
            } catch (const ComException& exception) {
                EXPECT_EQ(exception.hr(), NTE_SILENT_CONTEXT);
                names.emplace_back(exception.what());
            }
            EXPECT_EQ(notes_.size(), failing_) << "goes on behind a failure";
        }
        failing_ = 0;
        return names;
    }

private:
    std::vector<std::string> notes_;
    std::size_t failing_ = 0;
    Platform::Recorder recorder_{
        [this](const std::wstring& line) { notes_.push_back(toUtf8(line)); },
        [this](const std::wstring&) { return notes_.size() == failing_ ? NTE_SILENT_CONTEXT : S_OK; },
        [] { return std::wstring(L"Base64"); }};
    std::vector<DWORD> cookies_;
};

Certificate signer() {
    const Bytes der = readTestData("pki/signer.der");
    return Certificate(CertificateContext(
        ::CertCreateCertificateContext(X509_ASN_ENCODING, der.data(), static_cast<DWORD>(der.size()))));
}

using Lines = std::vector<std::string>;

// Numbers of the enumerations: user, Base64, and of what is inherited 2 a new similar key, 0x80 the subject,
// 0x100 the extensions, 0x20 the renewed certificate.
TEST_F(Renewal, ByTheEnrollmentObjects) {
    const Certificate certificate = signer();
    const std::string content = std::to_string((certificate.getContent().size() + 2) / 3 * 4) + " characters";
    const std::string provider = "'Crypto-Pro GOST R 34.10-2001 Cryptographic Service Provider'";
    EXPECT_EQ(renew(6, false, certificate),
              (Lines{"new pkcs10", "pkcs10.InitializeFromCertificate(1, " + content + ", 1, 386)",
                     "pkcs10.PrivateKey", "key.ProviderName=" + provider, "key.KeySpec=1", "pkcs10.Encode()",
                     "pkcs10.RawData(1)", "Base64"}));
    EXPECT_EQ(renew(10, true, certificate),
              (Lines{"new pkcs10", "pkcs10.InitializeFromCertificate(1, " + content + ", 1, 418)",
                     "pkcs10.PrivateKey", "key.ProviderName=" + provider, "key.KeySpec=1", "new pkcs7",
                     "pkcs7.InitializeFromInnerRequest(pkcs10)", "new signer",
                     "signer.Initialize(false, 0, 1, " + content + ")", "pkcs7.SignerCertificate=signer",
                     "pkcs7.Encode()", "pkcs7.RawData(1)", "Base64"}));
    EXPECT_EQ(namesOfFailures(6, false, certificate),
              (Lines{"E_CO_CREATE_PKCS10", "E_INITIALIZE_PKCS10", "E_GET_PRIVATE_KEY", "E_PUT_PROVIDER_NAME",
                     "E_PUT_KEY_SPEC", "E_ENCODE_CERTIFICATE_REQUEST_PKCS10", "E_REQUEST_BLOB_TO_STRING"}));
    EXPECT_EQ(namesOfFailures(6, true, certificate),
              (Lines{"E_CO_CREATE_PKCS10", "E_INITIALIZE_PKCS10", "E_GET_PRIVATE_KEY", "E_PUT_PROVIDER_NAME",
                     "E_PUT_KEY_SPEC", "E_CO_CREATE_PKCS7", "E_INITIALIZE_PKCS7", "E_PUT_SIGNER_CERTIFICATE",
                     "E_PUT_SIGNER_CERTIFICATE", "E_PUT_SIGNER_CERTIFICATE",
                     "E_ENCODE_CERTIFICATE_REQUEST_PKCS7", "E_REQUEST_BLOB_TO_STRING"}));
}

TEST_F(Renewal, WindowsBeforeXpHasNothing) {
    EXPECT_EQ(errorCode([] { createCertificateRequest(4); }), 400u);
}

// A certificate for the key of a new container, with the extensions of a certificate of an authority.
class Enroll4Renewal : public Renewal {
protected:
    void SetUp() override {
        Renewal::SetUp();
        container_.makeKey(AT_SIGNATURE, 0);
        // CRL distribution points, authority information access and authority key identifier stay behind.
        Bytes value{0x05, 0x00};
        CERT_EXTENSION extensions[] = {{oid("2.5.29.31"), FALSE, {2, value.data()}},
                                       {oid("2.5.29.15"), TRUE, {2, value.data()}},
                                       {oid("1.3.6.1.5.5.7.1.1"), FALSE, {2, value.data()}},
                                       {oid("2.5.29.35"), FALSE, {2, value.data()}},
                                       {oid("1.2.3"), FALSE, {2, value.data()}}};
        CERT_EXTENSIONS all{static_cast<DWORD>(std::size(extensions)), extensions};
        made_ = container_.selfSigned(
            {0x30, 0x0C, 0x31, 0x0A, 0x30, 0x08, 0x06, 0x03, 0x55, 0x04, 0x03, 0x0C, 0x01, 0x61}, &all);
    }

    Certificate certificate() const { return Certificate::duplicate(made_.get()); }
    std::string containerText() const { return toUtf8(container_.name); }

private:
    static char* oid(const char* text) { return const_cast<char*>(text); }

    KeyContainer container_{MS_ENH_RSA_AES_PROV_W, PROV_RSA_AES, L"renewal"};
    CertificateContext made_;
};

TEST_F(Enroll4Renewal, ByTheEnrollmentControl) {
    const std::string content =
        std::to_string((certificate().getContent().size() + 2) / 3 * 4) + " characters";
    for (const bool isPkcs7 : {false, true}) {
        EXPECT_EQ(
            renew(5, isPkcs7, certificate()),
            (Lines{"new control",
                   "control.ProviderName='Crypto-Pro GOST R 34.10-2001 Cryptographic Service Provider'",
                   "control.ProviderType=75", "control.ContainerName='" + containerText() + "'",
                   "control.UseExistingKeySet=true", "control.KeySpec=2",
                   "control.SignerCertificate=" + content,
                   "control.addExtensionToRequest(1, '2.5.29.15', 'BQA=')",
                   "control.addExtensionToRequest(0, '1.2.3', 'BQA=')",
                   isPkcs7 ? "control.createRequest(2, 'CN=a', '')" : "control.createRequest(1, 'CN=a', '')",
                   "Base64"}));
    }
    EXPECT_EQ(
        namesOfFailures(5, true, certificate()),
        (Lines{"E_CO_CREATE_ENROLL", "E_PUT_PROVIDER_NAME", "E_PUT_PROVIDER_TYPE", "E_PUT_CONTAINER_NAME",
               "E_PUT_CONTAINER_NAME", "E_PUT_KEY_SPEC", "E_PUT_SIGNER_CERTIFICATE",
               "E_CANT_ADD_CERTIFICATE_EXTENSION", "E_CANT_ADD_CERTIFICATE_EXTENSION", "E_CREATE_REQUEST"}));
    EXPECT_EQ(failureOf([] { createCertificateRequest(5)->getRenewalRequest(false, signer()); }),
              Failure(406, CRYPT_E_NOT_FOUND))
        << "a certificate without a key";
}

}  // namespace
