// What the functions for whole messages share.
#pragma once

#include "functions.h"

namespace Corvane::Platform::Messages {

constexpr DWORD usualEncoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;

class MessageHandle {
public:
    explicit MessageHandle(HCRYPTMSG handle) : handle_(must(handle)) {}
    ~MessageHandle() { close(handle_); }
    MessageHandle(const MessageHandle&) = delete;
    MessageHandle& operator=(const MessageHandle&) = delete;

    HCRYPTMSG get() const { return handle_; }
    void add(View bytes, bool isFinal) { must(update(handle_, bytes.data(), sizeOf(bytes), isFinal)); }
    Bytes param(DWORD type, DWORD index = 0) const {
        DWORD size = 0;
        must(getParam(handle_, type, index, nullptr, &size));
        Bytes bytes(size);
        must(getParam(handle_, type, index, bytes.data(), &size));
        return bytes;
    }
    DWORD number(DWORD type) const {
        DWORD value = 0;
        DWORD size = sizeof value;
        must(getParam(handle_, type, 0, &value, &size));
        return value;
    }

private:
    HCRYPTMSG handle_;
};

inline void closeStore(HCERTSTORE store) {
    ::CertCloseStore(store, 0);
}
struct Store {
    explicit Store(HCERTSTORE opened) : handle(must(opened)) {}
    ~Store() { closeStore(handle); }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;
    HCERTSTORE handle;
};

// The private key of a certificate, with its provider.
struct PrivateKey {
    explicit PrivateKey(PCCERT_CONTEXT certificate) {
        BOOL isOwned = FALSE;
        HCRYPTPROV found = 0;
        must(::CryptAcquireCertificatePrivateKey(certificate, 0, nullptr, &found, &spec, &isOwned));
        if (!isOwned)
            ::CryptContextAddRef(found, nullptr, 0);
        provider = OwnedProvider(found);
    }
    OwnedProvider provider;
    DWORD spec = 0;
};

}  // namespace Corvane::Platform::Messages
