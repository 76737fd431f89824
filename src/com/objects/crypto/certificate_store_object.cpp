#include "com/objects/crypto/certificate_store_object.h"

#include "com/objects/crypto/certificate_collection.h"
#include "com/objects/crypto/certificate_object.h"
#include "com/runtime/arguments.h"
#include "core/exception.h"
#include "crypto/certificate/certificate_filter.h"
#include "crypto/certificate/certificate_view.h"

#include <mutex>
#include <shared_mutex>

using namespace Corvane;
using namespace Corvane::Com;

namespace {

// Every other mode opens for reading.
constexpr ULONG openForWriting = 1;

}  // namespace

SharedStore CCertificateStore::store() const {
    const std::shared_lock guard(mutex_);
    if (!store_)
        throw Exception(E_CERT_STORE_NOT_OPENED);
    return store_;
}

SharedStore CCertificateStore::replace(SharedStore store) {
    const std::lock_guard guard(mutex_);
    store_.swap(store);
    return store;
}

HRESULT CCertificateStore::Open(ULONG location, BSTR name, ULONG openMode) {
    return serviceFrame(L"CCertificateStore::Open", [&] {
        const bool readOnly = openMode != openForWriting;
        replace(Corvane::CertificateStore::open(location, std::wstring(viewOf(name)), readOnly, false));
    });
}

HRESULT CCertificateStore::Close() {
    return serviceFrame(L"CCertificateStore::Close", [&] {
        const SharedStore closed = replace(nullptr);
        // Another thread that works with the store right now closes it when it has finished.
        if (closed && closed.use_count() == 1)
            closed->close();
    });
}

HRESULT CCertificateStore::get_name(BSTR* name) {
    return serviceFrame(L"CCertificateStore::get_name", [&] { give(name, store()->name()); });
}

HRESULT CCertificateStore::get_location(ULONG* location) {
    return serviceFrame(L"CCertificateStore::get_location", [&] { give(location, store()->location()); });
}

HRESULT CCertificateStore::GetCertificates(BSTR filter, ICertificateCollection** certificates) {
    return serviceFrame(L"CCertificateStore::GetCertificates", [&] {
        const std::wstring_view text = viewOf(filter);
        CertificateFilter accepts = Corvane::detail::CertSelectAllFn();
        if (!text.empty())
            accepts = Corvane::detail::CertCustomFilterFn::parse(text);
        give(certificates, makeCollection(store()->getCertificates(accepts, false)));
    });
}

HRESULT CCertificateStore::SelectCertificate(ICertificate** certificate) {
    return serviceFrame(L"CCertificateStore::SelectCertificate", [&] {
        SharedCertificate picked = Crypto::selectCertificateFromStore(*store());
        give(certificate, picked ? makeCertificate(std::move(picked)) : ComPtr<CCertificate>());
    });
}

HRESULT CCertificateStore::Install(ICertificate* certificate, ICertificate** installed) {
    return serviceFrame(L"CCertificateStore::Install", [&] {
        give(installed, makeCertificate(store()->install(*certificateOf(certificate))));
    });
}
