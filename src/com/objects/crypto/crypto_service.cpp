#include "com/objects/crypto/crypto_service.h"

#include "com/async/async.h"
#include "com/objects/binary/binary_object.h"
#include "com/objects/crypto/certificate_collection.h"
#include "com/objects/crypto/certificate_object.h"
#include "com/objects/crypto/crypto_provider.h"
#include "com/runtime/arguments.h"
#include "crypto/certificate/certificate_search.h"
#include "crypto/certificate/certificate_view.h"
#include "crypto/provider/provider_list.h"

#include <string>

using namespace Corvane;
using namespace Corvane::Com;

namespace {

auto searching(BSTR filter) {
    return Operation{L"Corvane::Crypto::getCertificates", [query = std::wstring(viewOf(filter))] {
                         return Crypto::getCertificates(query, false);
                     }};
}

auto finding(BSTR query) {
    return Operation{L"Corvane::Crypto::findCertificate",
                     [text = std::wstring(viewOf(query))] { return Crypto::findCertificate(text); }};
}

auto verifying(ICertificate* argument, LONG flags) {
    return Operation{L"Corvane::Certificate::verify",
                     [certificate = certificateOf(argument), bits = static_cast<DWORD>(flags)] {
                         return static_cast<LONG>(certificate->verify(bits));
                     }};
}

}  // namespace

HRESULT CCryptoService::GetCertificates(BSTR filter, ICertificateCollection** certificates) {
    return serviceFrame(L"CCryptoService::GetCertificates", [&] { run(certificates, searching(filter)); });
}

HRESULT CCryptoService::GetCertificatesAsync(BSTR filter, IDispatch* pCallback) {
    return serviceFrame(L"CCryptoService::GetCertificatesAsync",
                        [&] { start(pCallback, searching(filter)); });
}

HRESULT CCryptoService::FindCertificate(BSTR query, ICertificate** certificate) {
    return serviceFrame(L"CCryptoService::FindCertificate", [&] { run(certificate, finding(query)); });
}

HRESULT CCryptoService::FindCertificateAsync(BSTR query, IDispatch* pCallback) {
    return serviceFrame(L"CCryptoService::FindCertificateAsync", [&] { start(pCallback, finding(query)); });
}

HRESULT CCryptoService::CreateCertificateFromContent(IBinaryObject* content, ICertificate** certificate) {
    return serviceFrame(L"CCryptoService::CreateCertificateFromContent", [&] {
        const SharedBytes bytes = bytesOf(content);
        give(certificate,
             makeCertificate(std::make_shared<Corvane::Certificate>(Corvane::Certificate::create(*bytes))));
    });
}

HRESULT CCryptoService::SelectCertificateFromStore(BSTR storeName, ULONG storeLocation,
                                                   ICertificate** certificate) {
    return serviceFrame(L"CCryptoService::SelectCertificateFromStore", [&] {
        SharedCertificate picked =
            Crypto::selectCertificateFromStore(std::wstring(viewOf(storeName)), storeLocation);
        give(certificate, picked ? makeCertificate(std::move(picked)) : ComPtr<CCertificate>());
    });
}

HRESULT CCryptoService::VerifyCertificate(ICertificate* pCertificate, LONG flags, LONG* status) {
    return serviceFrame(L"CCryptoService::VerifyCertificate",
                        [&] { run(status, verifying(pCertificate, flags)); });
}

HRESULT CCryptoService::VerifyCertificateAsync(ICertificate* pCertificate, LONG flags, IDispatch* pCallback) {
    return serviceFrame(L"CCryptoService::VerifyCertificateAsync",
                        [&] { start(pCallback, verifying(pCertificate, flags)); });
}

HRESULT CCryptoService::GetCryptoProvidersInfo(BSTR* info) {
    return serviceFrame(L"CCryptoService::GetCryptoProvidersInfo",
                        [&] { give(info, Crypto::getCryptoProvidersInfo()); });
}

HRESULT CCryptoService::GetCryptoProvider(BSTR name, ULONG type, ICryptoProvider** provider) {
    return serviceFrame(L"CCryptoService::GetCryptoProvider", [&] {
        give(provider, makeObject<CCryptoProvider>(Crypto::findProvider(std::wstring(viewOf(name)), type)));
    });
}

HRESULT CCryptoService::GetDefaultCryptoProvider(ICryptoProvider** provider) {
    return serviceFrame(L"CCryptoService::GetDefaultCryptoProvider", [&] {
        give(provider, makeObject<CCryptoProvider>(Crypto::getDefaultCryptoProvider()->record()));
    });
}
