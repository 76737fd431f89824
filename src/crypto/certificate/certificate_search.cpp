#include "crypto/certificate/certificate_search.h"

#include "core/exception.h"
#include "core/log.h"
#include "crypto/certificate/certificate_filter.h"
#include "crypto/certificate/certificate_store.h"

#include <iterator>

namespace Corvane::Crypto {
namespace {

Stores openStores(const detail::CertCustomFilterFn& filter) {
    if (filter.storeName.empty())
        return CertificateStore::openStandard(filter.storeLocation, true, false);
    Stores stores;
    for (const unsigned location : {userStores, machineStores}) {
        if (filter.storeLocation == 0 || filter.storeLocation == location)
            stores.push_back(CertificateStore::open(location, filter.storeName, true, false));
    }
    return stores;
}

}  // namespace

Certificates getCertificates(std::wstring_view query, bool firstOnly) {
    writeLog(LogLevel::info, L"Corvane::Crypto::getCertificates", L"[in] query: ", query,
             L" [in] first only: ", firstOnly);
    const auto filter = detail::CertCustomFilterFn::parse(query);
    Certificates certificates;
    for (const SharedStore& store : openStores(filter)) {
        Certificates found = store->getCertificates(filter, firstOnly);
        certificates.insert(certificates.end(), std::make_move_iterator(found.begin()),
                            std::make_move_iterator(found.end()));
    }
    return certificates;
}

SharedCertificate findCertificate(std::wstring_view query) {
    writeLog(LogLevel::info, L"Corvane::Crypto::findCertificate", L"[in] query: ", query);
    const Certificates certificates = getCertificates(query, true);
    if (certificates.empty())
        throw Exception(E_CERT_NOT_FOUND);
    return certificates.front();
}

}  // namespace Corvane::Crypto
