// Requests with new keys, their answers, copies of keys, and renewals.
#include "api_faults.h"
#include "asn1/pkix/attribute.h"
#include "binary/base64.h"
#include "com/enroll/certificate_request.h"
#include "core/json.h"
#include "core/wide_text.h"
#include "crypto/certificate/certificate_store.h"
#include "crypto/enroll/copy_container.h"
#include "crypto/enroll/create_request.h"
#include "crypto/enroll/install_response.h"
#include "crypto/enroll/key_container.h"
#include "crypto/request/distinguished_name.h"
#include "crypto/request/extensions_json.h"
#include "platform/enroll/recorder.h"

#include <json/value.h>

using namespace Corvane;
using namespace Corvane::Test;

namespace {

SharedBytes shared(Bytes bytes) {
    return std::make_shared<Bytes>(std::move(bytes));
}

class Request : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(::CryptFindOIDInfo(CRYPT_OID_INFO_OID_KEY, const_cast<char*>("1.2.643.2.2.3"), 0))
            << "tests/platform/register comes before the tests";
        parameters.containerName = container.name;
        parameters.keySpec = AT_KEYEXCHANGE;
        parameters.distinguishedName = shared(Crypto::encodeDistinguishedName(L"CN=Иванов,C=RU"));
        parameters.extensions =
            shared(Crypto::encodeExtensionsJson(LR"({"keyUsage": ["digitalSignature"]})"));
        parameters.silent = true;
    }

    Failure failureWith(const ProviderRecord& record) const {
        return failureOf([&] { createCertificationRequest(record, parameters); });
    }

    const ProviderRecord gost = gostRecord();
    const KeyContainer container{gost, L"request"};
    RequestParameters parameters;
    // Wine's own function asks no provider for the key of a registered algorithm; the one with the identifier
    // does.
    const Replaced<WINBOOL, HCRYPTPROV_OR_NCRYPT_KEY_HANDLE, DWORD, DWORD, PCERT_PUBLIC_KEY_INFO, DWORD*>
        exporting{&::CryptExportPublicKeyInfo,
                  [](auto provider, auto spec, auto encoding, auto info, auto size) {
                      char oids[2][21] = {"1.2.643.2.2.19", szOID_RSA_RSA};
                      return std::ranges::any_of(oids, [&](char* oid) {
                          return ::CryptExportPublicKeyInfoEx(provider, spec, encoding, oid, 0, nullptr, info,
                                                              size);
                      });
                  }};
};

TEST_F(Request, DescribesTheTokenOfItsContainer) {
    const auto tokenOf = [](const std::wstring& path) { return Json::Value(toUtf8(path)); };
    constexpr char path[] = R"(\\.\Aktiv Rutoken\a)";
    const Replaced patch(&::CryptGetProvParam, [&](auto, auto, BYTE* buffer, DWORD* size, auto) {
        *size = sizeof(path);
        if (buffer)
            std::copy_n(path, sizeof(path), buffer);
        return TRUE;
    });
    const Json::Value json = parseJson(createCertificationRequestEx(gost, parameters, tokenOf));
    EXPECT_EQ(json["token"].asString(), path);
    EXPECT_EQ(json["path"], json["token"]);
}

TEST_F(Request, EachCallFailsOnce) {
    // challengePassword (RFC 2985 5.4.1)
    parameters.enrollmentParameters =
        shared(asn1::encodeAttribute({"1.2.840.113549.1.9.7", {hexToBin("0C0161")}}));
    int left = 0;
    const auto create = [&] {
        createCertificationRequestEx(gost, parameters, [](auto&) { return Json::Value(); });
    };
    const auto prepare = [&] {
        left += container.exists();
        container.remove();
    };
    failEachCall({{"request", quiet(create), prepare}});
    EXPECT_GT(left, 1) << "what was made stays behind";
}

TEST_F(Request, BadInputIsToldBySystem) {
    parameters.enrollmentParameters = shared(bytesOf("no attribute"));
    EXPECT_EQ(failureWith(gost).first, 609u);
    parameters.enrollmentParameters = nullptr;
    EXPECT_EQ(failureWith(gost), Failure(301, NTE_EXISTS)) << "the failure before has left the container";
    container.remove();
    const KeyContainer other(rsaRecord(), L"request");
    EXPECT_EQ(failureWith(rsaRecord()).first, 311u) << "not by GOST";
    parameters.extensions = shared({});
    EXPECT_EQ(failureWith(gost).first, 311u) << "no extensions at all";
    parameters.containerName += std::wstring(L"\0x", 2);
    EXPECT_EQ(failureWith(gost), Failure(301, ERROR_INVALID_NAME));
}

// The authority's answer: a certificate for the key of a container, which is not yet told of it.
class Response : public testing::Test {
protected:
    void SetUp() override {
        container.makeKey();
        der = Certificate(container.selfSigned('A')).getContent();
        text = binToBase64(der, base64NoLineBreaks);
    }
    void TearDown() override {
        ::CertUnregisterSystemStore(store.c_str(), CERT_SYSTEM_STORE_CURRENT_USER | CERT_STORE_DELETE_FLAG);
    }

    std::size_t installed() const {
        return CertificateStore::open(userStores, store, false, false)
            ->getCertificates(detail::CertSelectAllFn(), false)
            .size();
    }
    std::uint32_t install(const std::wstring& response) const {
        return errorCode([&] { installCertificateResponse(rsa, response, store); });
    }
    std::uint32_t installIn(const KeyContainer& place) const {
        return errorCode([&] { installCertificateResponseEx(rsa, text, place.name, store); });
    }
    static std::wstring containerOf(const Certificate& certificate) {
        const Bytes property = certificate.getCertProperty(CERT_KEY_PROV_INFO_PROP_ID);
        return reinterpret_cast<const CRYPT_KEY_PROV_INFO*>(property.data())->pwszContainerName;
    }

    const ProviderRecord rsa = rsaRecord();
    KeyContainer container{rsa, L"answer"};
    const KeyContainer copy{rsa, L"a copy"};
    const std::wstring store = L"Corvane " + std::to_wstring(::GetCurrentProcessId());
    Bytes der;
    std::wstring text;
};

TEST_F(Response, AllFormsAreInstalledWithTheirKey) {
    std::wstring hex = binToHex(der);
    std::wstring lower = hex;
    ::CharLowerBuffW(lower.data(), static_cast<DWORD>(lower.size()));
    hex.insert(60, L"\r\n");
    const std::wstring lines = binToBase64(der, 0);
    for (const std::wstring& response :
         {text, lines, L"-----BEGIN CERTIFICATE-----\r\n" + lines + L"\r\n-----END CERTIFICATE-----\r\n", hex,
          lower, std::wstring(der.begin(), der.end())}) {
        SCOPED_TRACE(toUtf8(response.substr(0, 30)));
        const SharedCertificate certificate = installCertificateResponse(rsa, response, store);
        EXPECT_EQ(certificate->getContent(), der);
        EXPECT_EQ(containerOf(*certificate), container.name);
    }
    EXPECT_GE(installed(), 1u);
}

TEST_F(Response, WhatDoesNotMatchInstallsNothing) {
    KeyContainer signatureOnly(rsa, L"a signature");
    signatureOnly.makeKey(AT_SIGNATURE, 0);
    KeyContainer other(rsa, L"other");
    other.makeKey(AT_KEYEXCHANGE, 0);
    EXPECT_EQ(install(binToBase64(readTestData("pki/root.der"), 0)), 323u);
    const Bytes list = readTestData("pki/no-signers.p7s");
    for (const std::wstring& response :
         {std::wstring(), std::wstring(L"no certificate"), std::wstring(L"ABCD"), text.substr(0, 400),
          text.substr(0, 40) + L"ж" + text.substr(41), binToBase64(list, 0), binToHex(list),
          std::wstring(list.begin(), list.end())})
        EXPECT_EQ(install(response), 324u) << toUtf8(response.substr(0, 30));
    EXPECT_EQ(installIn(other), 327u);
    EXPECT_EQ(installIn(signatureOnly), 327u);
    EXPECT_EQ(installIn(KeyContainer(rsa, L"missing")), 301u);
    EXPECT_EQ(installed(), 0u);
}

TEST_F(Response, TheFirstOfSeveralContainersIsBound) {
    const SharedCertificate certificate = installCertificateResponse(rsa, text, store);
    EXPECT_EQ(failureOf([&] { copyKeyContainer(*certificate, copy.name); }), Failure());
    EXPECT_EQ(installIn(copy), 0u) << "the copy has the key";
    const CryptProvider provider = detail::acquireProvider(rsa, nullptr, CRYPT_VERIFYCONTEXT | CRYPT_SILENT);
    const std::vector<std::wstring> names = detail::containerNames(provider.get());
    const auto first = std::ranges::find_if(
        names, [&](const auto& name) { return name == copy.name || name == container.name; });
    ASSERT_NE(first, names.end());
    EXPECT_EQ(containerOf(*installCertificateResponse(rsa, text, store)), *first);
    EXPECT_EQ(failureOf([&] { copyKeyContainer(*certificate, copy.name); }), Failure(301, NTE_EXISTS));
}

// Another program makes a container with a longer name while they are listed.
TEST_F(Response, ContainersMayComeWhileTheyAreListed) {
    std::vector<std::string_view> containers{"a", "b"};
    std::size_t next = 0;
    const Replaced patch(&::CryptGetProvParam, [&](auto, auto, BYTE* buffer, DWORD* size, DWORD flags) {
        if (flags & CRYPT_FIRST)
            next = 0;
        if (!buffer) {
            *size = 2;
            return TRUE;
        }
        const std::string_view name = next < containers.size() ? containers[next] : "";
        const bool hasRoom = name.size() < *size;
        ::SetLastError(name.empty() ? ERROR_NO_MORE_ITEMS : ERROR_MORE_DATA);
        *size = static_cast<DWORD>(name.size() + 1);
        if (name.empty() || !hasRoom)
            return FALSE;
        *std::ranges::copy(name, buffer).out = 0;
        if (++next == 1 && containers.size() == 2)
            containers.insert(containers.begin() + 1, "longer");
        return TRUE;
    });
    EXPECT_EQ(detail::containerNames(0), (std::vector<std::wstring>{L"a", L"longer", L"b"}));
}

TEST_F(Response, EachCallFailsOnce) {
    const SharedCertificate certificate = installCertificateResponse(rsa, text, store);
    const auto installIn = [&] { installCertificateResponseEx(rsa, text, container.name, store); };
    const auto search = [&] { return toUtf8(containerOf(*installCertificateResponse(rsa, text, store))); };
    const auto copyKey = [&] { copyKeyContainer(*certificate, copy.name); };
    bool isCopied = false;
    const auto prepare = [&] {
        EXPECT_EQ(copy.exists(), isCopied) << "a copy that failed leaves no container";
        copy.remove();
    };
    failEachCall({{"answer", quiet(installIn)}, {"search", search}, {"copy", quiet(copyKey), prepare}},
                 [&](const Work& work, bool isAnswer) { isCopied = isAnswer && work.name == "copy"; });
}

// Renewal requests: what is asked of the system's objects, and in which order.
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
