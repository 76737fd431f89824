// The system's certificate stores.
#pragma once

#include "core/handles.h"
#include "crypto/certificate/certificate.h"
#include "crypto/certificate/certificate_filter.h"

#include <memory>
#include <string>
#include <vector>

namespace Corvane {

class CertificateStore;

using SharedStore = std::shared_ptr<CertificateStore>;
using Stores = std::vector<SharedStore>;

// The two locations of stores. Zero stands for both of them where a search takes a location.
inline constexpr unsigned machineStores = 1;
inline constexpr unsigned userStores = 2;

// One open store; the system's handle is closed with it.
class CertificateStore {
public:
    // Opens a system store by name. With `archived` certificates with the archive flag are enumerated too.
    // Throws std::invalid_argument "Invalid store location" where that is neither 1 nor 2, and
    // CryptoException E_CERT_STORE_OPEN, also for a name with a NUL in it.
    static SharedStore open(unsigned location, const std::wstring& name, bool readOnly, bool archived);

    // "My", "Root", "Ca" and "AddressBook" of one location, or of the user and then of the machine
    // where `location` is 0. Throws as open() does.
    static Stores openStandard(unsigned location, bool readOnly, bool archived);

    // Throws CryptoException E_CERT_STORE_CLOSE. After it every method but the two names throws
    // Exception E_CERT_STORE_NOT_OPENED.
    void close();

    // The accepted certificates in the store's order; with `firstOnly` not more than one.
    // Throws CryptoException E_CERT_STORE_ENUM, and what the filter throws.
    Certificates getCertificates(const CertificateFilter& filter, bool firstOnly) const;

    // Adds a copy, beside an equal one if there is one, and returns the copy as it stands in the store.
    // Throws CryptoException E_CERT_STORE_INSTALL.
    SharedCertificate install(const Certificate& certificate);

    const std::wstring& name() const noexcept { return name_; }
    unsigned location() const noexcept { return location_; }
    // Valid until the store is closed.
    HCERTSTORE handle() const;

private:
    CertificateStore(CertificateStoreHandle handle, std::wstring name, unsigned location);

    CertificateStoreHandle handle_;
    std::wstring name_;
    unsigned location_;
};

}  // namespace Corvane
