#include "com/objects/crypto/certificate_collection.h"

#include "com/objects/crypto/certificate_object.h"
#include "com/runtime/arguments.h"
#include "com/runtime/enum_variant.h"

#include <iterator>
#include <mutex>
#include <shared_mutex>

using namespace Corvane;
using namespace Corvane::Com;

Certificates CCertificateCollection::certificates() const {
    const std::shared_lock guard(mutex_);
    return certificates_;
}

HRESULT CCertificateCollection::get_count(ULONG* count) {
    if (!count)
        return E_POINTER;
    const std::shared_lock guard(mutex_);
    *count = static_cast<ULONG>(certificates_.size());
    return S_OK;
}

HRESULT CCertificateCollection::get_Item(ULONG index, ICertificate** certificate) {
    SharedCertificate found;
    {
        const std::shared_lock guard(mutex_);
        if (index < certificates_.size())
            found = certificates_[index];
    }
    if (!found)
        return reportError(classId(), E_CERT_OUT_OF_RANGE);
    return frame(L"CCertificateCollection::get_Item", [&] { give(certificate, makeCertificate(found)); });
}

HRESULT CCertificateCollection::Add(ICertificate* certificate) {
    return frame(L"CCertificateCollection::Add", [&] {
        SharedCertificate added = certificateOf(certificate);
        const std::lock_guard guard(mutex_);
        certificates_.push_back(std::move(added));
    });
}

HRESULT CCertificateCollection::Remove(ULONG index) {
    SharedCertificate removed;
    {
        const std::lock_guard guard(mutex_);
        if (index < certificates_.size()) {
            removed = std::move(certificates_[index]);
            certificates_.erase(std::next(certificates_.begin(), static_cast<std::ptrdiff_t>(index)));
        }
    }
    return removed ? S_OK : reportError(classId(), E_CERT_OUT_OF_RANGE);
}

HRESULT CCertificateCollection::Clear() {
    Certificates dropped;
    const std::lock_guard guard(mutex_);
    dropped.swap(certificates_);
    return S_OK;
}

HRESULT CCertificateCollection::get__NewEnum(IUnknown** enumerator) {
    return frame(L"CCertificateCollection::get__NewEnum", [&] {
        std::vector<ComPtr<IDispatch>> items;
        for (const SharedCertificate& certificate : certificates())
            items.emplace_back(static_cast<ICertificate*>(makeCertificate(certificate).get()));
        give(enumerator, makeEnumerator(std::move(items)));
    });
}

namespace Corvane::Com {

ComPtr<CCertificateCollection> makeCollection(Certificates certificates) {
    return makeObject<CCertificateCollection>(std::move(certificates));
}

}  // namespace Corvane::Com
