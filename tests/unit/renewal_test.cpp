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
            ASSERT_HRESULT_SUCCEEDED(::CoRegisterClassObject(recorded.clsid, factory, CLSCTX_INPROC_SERVER,
                                                             REGCLS_MULTIPLEUSE, &cookies_.emplace_back()));
            factory->Release();
        }
        container_.makeKey(AT_SIGNATURE, 0);
        Bytes value{0x05, 0x00};
        std::vector<CERT_EXTENSION> extensions;
        for (const char* oid : {"2.5.29.31", "2.5.29.15", "1.3.6.1.5.5.7.1.1", "2.5.29.35", "1.2.3"})
            extensions.push_back(
                {const_cast<char*>(oid), oid == std::string("2.5.29.15"), {2, value.data()}});
        CERT_EXTENSIONS all{static_cast<DWORD>(extensions.size()), extensions.data()};
        made_ = container_.selfSigned('a', &all);
    }
    void TearDown() override {
        for (const DWORD cookie : cookies_)
            ::CoRevokeClassObject(cookie);
        ::CoUninitialize();
    }

    // A line of the table with what is known by now.
    std::string filled(std::string line) const {
        const auto content = std::to_string((made_.get()->cbCertEncoded + 2) / 3 * 4) + " characters";
        for (const auto& [mark, text] : {std::pair<std::string, std::string>("<content>", content),
                                         {"<container>", toUtf8(container_.name)}})
            if (const std::size_t at = line.find(mark); at != std::string::npos)
                line.replace(at, mark.size(), text);
        return line;
    }

    std::vector<std::string> notes_;
    std::size_t failing_ = 0;  // the number of a call
    Platform::Recorder recorder_{
        [this](const std::wstring& line) { notes_.push_back(toUtf8(line)); },
        [this](const std::wstring&) { return notes_.size() == failing_ ? NTE_SILENT_CONTEXT : S_OK; },
        [] { return std::wstring(L"Base64"); }};
    std::vector<DWORD> cookies_;
    KeyContainer container_{rsaRecord(), L"renewal"};
    CertificateContext made_;
};

TEST_F(Renewal, MakesTheCallsOfTheTableAndTellsWhichFailed) {
    const Certificate certificate = Certificate::duplicate(made_.get());
    for (const auto& [name, version, isPkcs7] : {std::tuple("pkcs10", 6u, false),
                                                 {"pkcs7", 10u, true},
                                                 {"control10", 5u, false},
                                                 {"control7", 5u, true}}) {
        SCOPED_TRACE(name);
        std::vector<std::string> calls;
        std::vector<std::string> errors;
        for (const auto& row : readTable("requests/renewal.txt", 3)) {
            if ((row[0] + ' ').find(name + std::string(" ")) == std::string::npos)
                continue;
            calls.push_back(filled(row[1]));
            errors.push_back(row[2]);
        }
        failing_ = 0;
        notes_.clear();
        EXPECT_EQ(createCertificateRequest(version)->getRenewalRequest(isPkcs7, certificate), L"Base64");
        EXPECT_EQ(notes_, calls);
        for (failing_ = 1; failing_ <= calls.size(); ++failing_) {
            notes_.clear();
            try {
                createCertificateRequest(version)->getRenewalRequest(isPkcs7, certificate);
                ADD_FAILURE() << calls[failing_ - 1];
            } catch (const ComException& exception) {
                EXPECT_EQ(exception.hr(), NTE_SILENT_CONTEXT);
                EXPECT_EQ(exception.what(), errors[failing_ - 1]);
            }
            EXPECT_EQ(notes_.size(), failing_) << "goes on behind a failure";
        }
    }
}

TEST_F(Renewal, NeedsAKeyAndWindowsXp) {
    const Certificate bare = pkiCertificate("signer");
    EXPECT_EQ(failureOf([&] { createCertificateRequest(5)->getRenewalRequest(false, bare); }),
              Failure(406, CRYPT_E_NOT_FOUND));
    EXPECT_EQ(errorCode([] { createCertificateRequest(4); }), 400u);
}

}  // namespace
