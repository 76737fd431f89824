// What the crypto service makes of arguments that are no certificates, no messages, or damaged ones.
#include "component.h"
#include "foreign_object.h"

#include <functional>
#include <vector>

namespace robustness {
namespace {

class CryptoTest : public ComponentTest {
protected:
    CryptoTest() : crypto_(component_.create<ICryptoService>(__uuidof(CryptoService))) {
        const auto site = ComPtr<PlainSite>::adopt(new PlainSite);
        EXPECT_EQ(crypto_.query<IObjectWithSite>()->SetSite(site.get()), S_OK);
    }

    ~CryptoTest() override { crypto_.reset(); }

    std::wstring hexOfFile(const wchar_t* name) const {
        const std::string folder = CORVANE_TEST_DATA;
        const std::wstring path = std::wstring(folder.begin(), folder.end()) + L"/pki/" + name;
        ComPtr<IBinaryObject> content;
        EXPECT_EQ(service()->BinaryObjectFromFile(Bstr(path).get(), content.put()), S_OK);
        return hexOf(*content);
    }

    HRESULT verify(std::wstring_view message) const {
        ComPtr<ICertificateCollection> signers;
        VARIANT none = {};
        const HRESULT hr = crypto_->VerifyAttachedSignature(bytes(message).get(), none, signers.put());
        EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(signers)) << "a result and a failure exclude each other";
        return hr;
    }

    // A message of another program is good, or is refused with an error of ours.
    void expectVerdict(std::wstring_view message) const {
        const HRESULT hr = verify(message);
        EXPECT_TRUE(hr == S_OK || HRESULT_FACILITY(hr) == FACILITY_ITF) << std::hex << hr;
    }

    ComPtr<ICryptoService> crypto_;
};

TEST_F(CryptoTest, ObjectsThatAreNotTheComponentsOwn) {
    ForeignObject foreign(E_NOINTERFACE, nullptr);
    const auto data = bytes(L"00");
    auto* const foreignBytes = foreign.as<IBinaryObject>();
    auto* const foreignCertificate = foreign.as<ICertificate>();
    auto* const mistaken = static_cast<ICertificate*>(static_cast<void*>(data.get()));
    ComPtr<IBinaryObject> signature;
    ComPtr<ICertificate> certificate;
    ComPtr<ICertificateCollection> signers;
    const VARIANT none = {};
    EXPECT_EQ(crypto_->Sign(foreignBytes, foreignCertificate, VARIANT_FALSE, signature.put()), E_NOINTERFACE);
    EXPECT_EQ(crypto_->Sign(data.get(), foreignCertificate, VARIANT_FALSE, signature.put()), E_NOINTERFACE);
    EXPECT_EQ(crypto_->Sign(data.get(), mistaken, VARIANT_FALSE, signature.put()), E_NOINTERFACE);
    EXPECT_EQ(crypto_->AttachedSign(nullptr, nullptr, VARIANT_TRUE, signature.put()), E_POINTER);
    EXPECT_EQ(crypto_->CreateCertificateFromContent(foreignBytes, certificate.put()), E_NOINTERFACE);
    EXPECT_EQ(crypto_->CreateCertificateFromContent(nullptr, certificate.put()), E_POINTER);
    EXPECT_EQ(crypto_->VerifySignature(data.get(), foreignBytes, none, signers.put()), E_NOINTERFACE);
    EXPECT_EQ(crypto_->VerifySignature(nullptr, data.get(), none, signers.put()), E_POINTER);
    EXPECT_EQ(crypto_->VerifyAttachedSignature(nullptr, none, signers.put()), E_POINTER);
    EXPECT_EQ(foreign.references(), 0U);
}

TEST_F(CryptoTest, WhatIsNoMessage) {
    const std::wstring message = hexOfFile(L"attached-plain.p7s");
    ASSERT_EQ(verify(message), S_OK);
    for (const std::wstring& hex :
         {std::wstring(), std::wstring(L"30"), std::wstring(L"3080"), std::wstring(L"3000"),
          std::wstring(L"30847FFFFFFF"), std::wstring(100000, L'0'), message + L"00", message.substr(2)})
        expectVerdict(hex);
    EXPECT_NE(verify(L""), S_OK);
    EXPECT_NE(verify(L"3000"), S_OK);
    EXPECT_NE(verify(message.substr(2)), S_OK);
}

TEST_F(CryptoTest, CutAndDamagedMessages) {
    const std::wstring message = hexOfFile(L"attached-plain.p7s");
    for (std::size_t length = 0; length < message.size(); length += 62) {
        EXPECT_NE(verify(message.substr(0, length)), S_OK) << length / 2 << " bytes of the message";
    }
    for (std::size_t place = 0; place < message.size(); place += 34) {
        std::wstring damaged = message;
        damaged[place] = damaged[place] == L'F' ? L'0' : L'F';
        expectVerdict(damaged);
    }
}

TEST_F(CryptoTest, WhatIsNoCertificate) {
    for (const std::wstring_view hex : {L"", L"00", L"3000", L"FFFFFFFFFFFFFFFF", L"2D2D2D2D2D424547494E"}) {
        ComPtr<ICertificate> certificate;
        const HRESULT hr = crypto_->CreateCertificateFromContent(bytes(hex).get(), certificate.put());
        EXPECT_EQ(HRESULT_FACILITY(hr), FACILITY_ITF) << std::hex << hr;
        EXPECT_FALSE(certificate);
    }
}

TEST_F(CryptoTest, FiltersOfEveryShape) {
    for (const wchar_t* filter :
         {L"", L"{}", L"[]", L"null", L"{\"name\":\"nobody\"}", L"not JSON", L"{\"name\":\"\\u0000\"}",
          L"{\"hash\":\"\"}", L"{\"storeLocation\":\"user\"}"}) {
        ComPtr<ICertificateCollection> found;
        EXPECT_EQ(crypto_->GetCertificates(Bstr(filter).get(), found.put()), S_OK) << filter;
    }
    const std::wstring deep = std::wstring(100000, L'[');
    for (const std::wstring& filter :
         {std::wstring(L"{\"name\":1}"), std::wstring(L"{\"hash\":\"0g\"}"),
          std::wstring(L"{\"hash\":\"0\"}"), std::wstring(L"{\"storeLocation\":3}"),
          std::wstring(L"{\"archived\":\"yes\"}")}) {
        ComPtr<ICertificateCollection> found;
        EXPECT_EQ(static_cast<unsigned long>(crypto_->GetCertificates(Bstr(filter).get(), found.put())),
                  0x80040460);
        EXPECT_FALSE(found);
    }
    ComPtr<ICertificateCollection> found;
    crypto_->GetCertificates(Bstr(deep).get(), found.put());  // however deep, the stack lasts
}

}  // namespace
}  // namespace robustness
