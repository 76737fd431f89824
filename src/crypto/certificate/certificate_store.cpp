#include "crypto/certificate/certificate_store.h"

#include "core/check.h"
#include "core/log.h"

#include <stdexcept>
#include <utility>

namespace Corvane {
namespace {

DWORD locationFlag(unsigned location) {
    switch (location) {
        case machineStores:
            return CERT_SYSTEM_STORE_LOCAL_MACHINE;
        case userStores:
            return CERT_SYSTEM_STORE_CURRENT_USER;
        default:
            throw std::invalid_argument("Invalid store location");
    }
}

}  // namespace

CertificateStore::CertificateStore(CertificateStoreHandle handle, std::wstring name, unsigned location)
    : handle_(std::move(handle)), name_(std::move(name)), location_(location) {}

SharedStore CertificateStore::open(unsigned location, const std::wstring& name, bool readOnly,
                                   bool archived) {
    writeLog(LogLevel::debug, L"Corvane::CertificateStore::open", L"[in] location: ", location,
             L" [in] store name: ", name, L" [in] read only: ", readOnly, L" [in] archived: ", archived);
    // The system would open the store whose name ends before it.
    if (name.find(L'\0') != std::wstring::npos)
        failCrypto(E_CERT_STORE_OPEN, L"CertOpenStore", ERROR_INVALID_NAME);
    const DWORD flags = locationFlag(location) | (readOnly ? CERT_STORE_READONLY_FLAG : 0) |
                        (archived ? CERT_STORE_ENUM_ARCHIVED_FLAG : 0);
    CertificateStoreHandle handle(
        checkCrypto(::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, flags, name.c_str()), E_CERT_STORE_OPEN,
                    L"CertOpenStore"));
    return SharedStore(new CertificateStore(std::move(handle), name, location));
}

Stores CertificateStore::openStandard(unsigned location, bool readOnly, bool archived) {
    writeLog(LogLevel::debug, L"Corvane::CertificateStore::openStandard", L"[in] location: ", location,
             L" [in] read only: ", readOnly, L" [in] archived: ", archived);
    Stores stores;
    for (const unsigned place : {userStores, machineStores}) {
        if (location != 0 && location != place)
            continue;
        for (const wchar_t* name : {L"My", L"Root", L"Ca", L"AddressBook"})
            stores.push_back(open(place, name, readOnly, archived));
    }
    if (stores.empty())
        throw std::invalid_argument("Invalid store location");
    return stores;
}

HCERTSTORE CertificateStore::handle() const {
    if (!handle_)
        throw Exception(E_CERT_STORE_NOT_OPENED);
    return handle_.get();
}

void CertificateStore::close() {
    writeLog(LogLevel::debug, L"Corvane::CertificateStore::close", L"[in] store name: ", name_,
             L" [in] location: ", location_);
    static_cast<void>(handle());
    checkCrypto(::CertCloseStore(handle_.detach(), 0), E_CERT_STORE_CLOSE, L"CertCloseStore");
}

Certificates CertificateStore::getCertificates(const CertificateFilter& filter, bool firstOnly) const {
    writeLog(LogLevel::debug, L"Corvane::CertificateStore::getCertificates", L"[in] store name: ", name_,
             L" [in] location: ", location_, L" [in] first only: ", firstOnly);
    const HCERTSTORE store = handle();
    Certificates certificates;
    CertificateContext context;
    // One that was refused makes room for the next, and hands its context on.
    auto certificate = std::make_shared<Certificate>(CertificateContext());
    for (;;) {
        // The call frees the context it goes on from.
        context.attach(::CertEnumCertificatesInStore(store, context.detach()));
        if (!context)
            break;
        *certificate = Certificate(std::move(context));
        if (!filter(certificate)) {
            context = certificate->detach();
            continue;
        }
        context = Certificate(*certificate).detach();
        certificates.push_back(
            std::exchange(certificate, std::make_shared<Certificate>(CertificateContext())));
        if (firstOnly)
            return certificates;
    }
    const DWORD error = ::GetLastError();
    if (error != static_cast<DWORD>(CRYPT_E_NOT_FOUND) && error != ERROR_NO_MORE_FILES)
        failCrypto(E_CERT_STORE_ENUM, L"CertEnumCertificatesInStore", error);
    return certificates;
}

// NOLINTNEXTLINE(readability-make-member-function-const): the store changes
SharedCertificate CertificateStore::install(const Certificate& certificate) {
    writeLog(LogLevel::debug, L"Corvane::CertificateStore::install", L"certificate: ", certificate);
    CertificateContext stored;
    checkCrypto(::CertAddCertificateContextToStore(handle(), certificate.context(), CERT_STORE_ADD_ALWAYS,
                                                   stored.put()),
                E_CERT_STORE_INSTALL, L"CertAddCertificateContextToStore");
    return std::make_shared<Certificate>(std::move(stored));
}

}  // namespace Corvane
