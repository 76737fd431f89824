// A key container of a test's own, certificates for its key, and those of tests/data/pki.
#pragma once

#include "crypto/certificate/certificate.h"
#include "crypto/provider/provider_record.h"
#include "support.h"

#include <windows.h>

#include <wincrypt.h>

#include <stdexcept>
#include <string>
#include <utility>

namespace Corvane::Test {

inline void must(bool done) {
    if (!done)
        throw std::runtime_error("system error " + std::to_string(::GetLastError()));
}

inline Certificate pkiCertificate(const std::string& name) {
    const Bytes der = readTestData("pki/" + name + ".der");
    return Certificate(CertificateContext(
        ::CertCreateCertificateContext(X509_ASN_ENCODING, der.data(), static_cast<DWORD>(der.size()))));
}

inline ProviderRecord gostRecord() {
    return providerRecords().front();
}
inline ProviderRecord rsaRecord() {
    return providerRecords().back();
}

class KeyContainer {
public:
    // Its name, which is free; nothing is there any more when this ends.
    KeyContainer(ProviderRecord provider, const std::wstring& what)
        : name(L"corvane " + std::to_wstring(::GetCurrentProcessId()) + L" " + what),
          provider_(std::move(provider)) {}
    KeyContainer(const KeyContainer&) = delete;
    KeyContainer& operator=(const KeyContainer&) = delete;
    ~KeyContainer() { remove(); }

    bool exists() const { return open(CryptProvider().put(), 0); }
    void remove() const {
        HCRYPTPROV none = 0;
        open(&none, CRYPT_DELETEKEYSET);
    }
    void makeKey(DWORD keySpec = AT_KEYEXCHANGE, DWORD flags = CRYPT_EXPORTABLE) {
        spec_ = keySpec;
        CryptProvider provider;
        CryptKey key;
        must(open(provider.put(), CRYPT_NEWKEYSET) &&
             ::CryptGenKey(provider.get(), keySpec, flags, key.put()));
    }

    // Refers to this object.
    CRYPT_KEY_PROV_INFO place() const {
        auto* const provider = const_cast<wchar_t*>(provider_.name.c_str());
        return {const_cast<wchar_t*>(name.c_str()), provider, provider_.type, 0, 0, nullptr, spec_};
    }
    // For the key, in the name of CN=`letter`.
    CertificateContext selfSigned(char letter, CERT_EXTENSIONS* extensions = nullptr) const {
        Bytes subject = hexToBin("300C310A300806035504030C0100");
        subject.back() = static_cast<std::uint8_t>(letter);
        CERT_NAME_BLOB blob{static_cast<DWORD>(subject.size()), subject.data()};
        CRYPT_KEY_PROV_INFO where = place();
        CertificateContext made(
            ::CertCreateSelfSignCertificate(0, &blob, 0, &where, nullptr, nullptr, nullptr, extensions));
        must(static_cast<bool>(made));
        return made;
    }

    const std::wstring name;

private:
    BOOL open(HCRYPTPROV* provider, DWORD flags) const {
        return ::CryptAcquireContextW(provider, name.c_str(), provider_.name.c_str(), provider_.type,
                                      flags | CRYPT_SILENT);
    }

    ProviderRecord provider_;
    DWORD spec_ = AT_KEYEXCHANGE;
};

}  // namespace Corvane::Test
