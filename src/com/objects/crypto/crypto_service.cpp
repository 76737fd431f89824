#include "com/objects/crypto/crypto_service.h"

#include "com/objects/binary/binary_object.h"
#include "com/objects/crypto/certificate_arguments.h"
#include "com/objects/crypto/certificate_collection.h"
#include "com/objects/crypto/certificate_object.h"
#include "com/runtime/arguments.h"
#include "crypto/certificate/certificate_search.h"
#include "crypto/message/crypto_api_provider.h"

using namespace Corvane;
using namespace Corvane::Com;

namespace {

ComPtr<CBinaryObject> sign(IBinaryObject* data, ICertificate* signer, bool attached,
                           VARIANT_BOOL addCertChain) {
    const SharedBytes bytes = bytesOf(data);
    const SharedCertificate certificate = certificateOf(signer);
    const Crypto::SharedProvider provider = Crypto::getCryptoProvider(*certificate);
    return makeBinary(provider->sign(*bytes, *certificate, attached, addCertChain != VARIANT_FALSE));
}

ComPtr<CCertificateCollection> verify(IBinaryObject* signature, const Bytes* data,
                                      const VARIANT& certificates) {
    const SharedBytes message = bytesOf(signature);
    const Certificates supplied = certificatesOf(certificates);
    const Crypto::SharedProvider provider = Crypto::getDefaultCryptoProvider();
    return makeCollection(provider->verifyMessageSignature(*message, data, supplied));
}

}  // namespace

HRESULT CCryptoService::GetCertificates(BSTR filter, ICertificateCollection** certificates) {
    return serviceFrame(L"CCryptoService::GetCertificates", [&] {
        give(certificates, makeCollection(Crypto::getCertificates(viewOf(filter), false)));
    });
}

HRESULT CCryptoService::FindCertificate(BSTR query, ICertificate** certificate) {
    return serviceFrame(L"CCryptoService::FindCertificate",
                        [&] { give(certificate, makeCertificate(Crypto::findCertificate(viewOf(query)))); });
}

HRESULT CCryptoService::CreateCertificateFromContent(IBinaryObject* content, ICertificate** certificate) {
    return serviceFrame(L"CCryptoService::CreateCertificateFromContent", [&] {
        const SharedBytes bytes = bytesOf(content);
        give(certificate,
             makeCertificate(std::make_shared<Corvane::Certificate>(Corvane::Certificate::create(*bytes))));
    });
}

HRESULT CCryptoService::Sign(IBinaryObject* pData, ICertificate* pCertificate, VARIANT_BOOL addCertChain,
                             IBinaryObject** signature) {
    return serviceFrame(L"CCryptoService::Sign",
                        [&] { give(signature, sign(pData, pCertificate, false, addCertChain)); });
}

HRESULT CCryptoService::AttachedSign(IBinaryObject* pData, ICertificate* pCertificate,
                                     VARIANT_BOOL addCertChain, IBinaryObject** signature) {
    return serviceFrame(L"CCryptoService::AttachedSign",
                        [&] { give(signature, sign(pData, pCertificate, true, addCertChain)); });
}

HRESULT CCryptoService::VerifySignature(IBinaryObject* pData, IBinaryObject* signature, VARIANT certificates,
                                        ICertificateCollection** signers) {
    return serviceFrame(L"CCryptoService::VerifySignature", [&] {
        const SharedBytes data = bytesOf(pData);
        give(signers, verify(signature, data.get(), certificates));
    });
}

HRESULT CCryptoService::VerifyAttachedSignature(IBinaryObject* pSignature, VARIANT certificates,
                                                ICertificateCollection** signers) {
    return serviceFrame(L"CCryptoService::VerifyAttachedSignature",
                        [&] { give(signers, verify(pSignature, nullptr, certificates)); });
}
