// A key container of a test's own, and certificates for its key.
#pragma once

#include "binary/bytes.h"
#include "core/handles.h"

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

class KeyContainer {
public:
    // Its name, which is free; nothing is there any more when this ends.
    KeyContainer(std::wstring provider, DWORD type, const std::wstring& what)
        : name(L"corvane " + std::to_wstring(::GetCurrentProcessId()) + L" " + what),
          provider_(std::move(provider)),
          type_(type) {}
    KeyContainer(const KeyContainer&) = delete;
    KeyContainer& operator=(const KeyContainer&) = delete;
    ~KeyContainer() { remove(); }

    bool exists() const {
        CryptProvider provider;
        return open(provider.put(), 0);
    }
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
        return {const_cast<wchar_t*>(name.c_str()),
                const_cast<wchar_t*>(provider_.c_str()),
                type_,
                0,
                0,
                nullptr,
                spec_};
    }
    // For the key, in the name of `subject`, which is DER.
    CertificateContext selfSigned(Bytes subject, CERT_EXTENSIONS* extensions = nullptr) const {
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
        return ::CryptAcquireContextW(provider, name.c_str(), provider_.c_str(), type_, flags | CRYPT_SILENT);
    }

    std::wstring provider_;
    DWORD type_;
    DWORD spec_ = AT_KEYEXCHANGE;
};

}  // namespace Corvane::Test
