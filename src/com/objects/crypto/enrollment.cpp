// Requests for certificates and their answers, of CryptoService and CryptoProvider.
#include "com/enroll/certificate_request.h"
#include "com/objects/binary/binary_object.h"
#include "com/objects/crypto/certificate_object.h"
#include "com/objects/crypto/crypto_provider.h"
#include "com/objects/crypto/crypto_service.h"
#include "com/runtime/arguments.h"
#include "crypto/enroll/copy_container.h"
#include "crypto/enroll/create_request.h"
#include "crypto/enroll/install_response.h"
#include "crypto/enroll/request_signature.h"
#include "crypto/request/distinguished_name.h"
#include "crypto/request/extensions_json.h"
#include "token/discovery/tokens.h"
#include "token/discovery/tokens_info.h"

#include <json/value.h>

using namespace Corvane;
using namespace Corvane::Com;

namespace {

// Only what automation calls true: a script's 1 would pass as that.
bool isTrue(const VARIANT& argument) {
    const Variant value = plainValue(argument);
    return V_VT(&value.get()) == VT_BOOL && V_BOOL(&value.get()) == VARIANT_TRUE;
}

std::wstring textOf(BSTR text) {
    return std::wstring(viewOf(text));
}

RequestParameters parametersOf(BSTR containerName, ULONG keySpec, IBinaryObject* distinguishedName,
                               IBinaryObject* extensions, SharedBytes enrollmentParameters,
                               const VARIANT& exportable, const VARIANT& silent) {
    return {textOf(containerName),
            keySpec,
            bytesOf(distinguishedName),
            bytesOf(extensions),
            std::move(enrollmentParameters),
            isTrue(exportable),
            isTrue(silent)};
}

Json::Value tokenOf(const std::wstring& containerPath) {
    const std::vector<Token> tokens = Corvane::detail::getTokens();
    const Token* token = Corvane::detail::findTokenOf(containerPath, tokens);
    return token ? Crypto::describeToken(*token) : Json::Value();
}

}  // namespace

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::CreateCertificationRequest(
    BSTR containerName, ULONG keySpec, IBinaryObject* pDistinguishedName, IBinaryObject* pExtensions,
    VARIANT exportable, VARIANT silent, IBinaryObject** request) {
    return this->serviceFrame(methodName<T, L"CreateCertificationRequest">(), [&] {
        const RequestParameters parameters = parametersOf(containerName, keySpec, pDistinguishedName,
                                                          pExtensions, nullptr, exportable, silent);
        give(request, makeBinary(createCertificationRequest(choice_.forNoKey()->record(), parameters)));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::CreateCertificationRequestEx(
    BSTR containerName, ULONG keySpec, IBinaryObject* pDistinguishedName, IBinaryObject* pExtensions,
    VARIANT exportable, VARIANT silent, BSTR* result) {
    return this->serviceFrame(methodName<T, L"CreateCertificationRequestEx">(), [&] {
        const RequestParameters parameters = parametersOf(containerName, keySpec, pDistinguishedName,
                                                          pExtensions, nullptr, exportable, silent);
        give(result, createCertificationRequestEx(choice_.forNoKey()->record(), parameters, tokenOf));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::CreateCertificationRequestExV2(
    BSTR containerName, ULONG keySpec, IBinaryObject* pDistinguishedName, IBinaryObject* pExtensions,
    VARIANT pEnrollmentParameters, VARIANT exportable, VARIANT silent, BSTR* result) {
    return this->serviceFrame(methodName<T, L"CreateCertificationRequestExV2">(), [&] {
        const RequestParameters parameters =
            parametersOf(containerName, keySpec, pDistinguishedName, pExtensions,
                         optionalBytesOf(pEnrollmentParameters), exportable, silent);
        give(result, createCertificationRequestEx(choice_.forNoKey()->record(), parameters, tokenOf));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::InstallCertificateResponse(BSTR response, BSTR storeName,
                                                                             ICertificate** certificate) {
    return this->serviceFrame(methodName<T, L"InstallCertificateResponse">(), [&] {
        give(certificate, makeCertificate(installCertificateResponse(choice_.forNoKey()->record(),
                                                                     viewOf(response), textOf(storeName))));
    });
}

template <class T, class Coclass, class Interface>
HRESULT CCryptoOperations<T, Coclass, Interface>::InstallCertificateResponseEx(BSTR response,
                                                                               BSTR containerPath,
                                                                               BSTR storeName,
                                                                               ICertificate** certificate) {
    return this->serviceFrame(methodName<T, L"InstallCertificateResponseEx">(), [&] {
        give(certificate,
             makeCertificate(installCertificateResponseEx(choice_.forNoKey()->record(), viewOf(response),
                                                          textOf(containerPath), textOf(storeName))));
    });
}

// The template's other methods are instantiated beside their definitions.
template HRESULT CCryptoOperations<CCryptoService, CryptoService, ICryptoService>::CreateCertificationRequest(
    BSTR, ULONG, IBinaryObject*, IBinaryObject*, VARIANT, VARIANT, IBinaryObject**);
template HRESULT CCryptoOperations<CCryptoService, CryptoService,
                                   ICryptoService>::CreateCertificationRequestEx(BSTR, ULONG, IBinaryObject*,
                                                                                 IBinaryObject*, VARIANT,
                                                                                 VARIANT, BSTR*);
template HRESULT
CCryptoOperations<CCryptoService, CryptoService, ICryptoService>::CreateCertificationRequestExV2(
    BSTR, ULONG, IBinaryObject*, IBinaryObject*, VARIANT, VARIANT, VARIANT, BSTR*);
template HRESULT CCryptoOperations<CCryptoService, CryptoService, ICryptoService>::InstallCertificateResponse(
    BSTR, BSTR, ICertificate**);
template HRESULT CCryptoOperations<CCryptoService, CryptoService,
                                   ICryptoService>::InstallCertificateResponseEx(BSTR, BSTR, BSTR,
                                                                                 ICertificate**);
template HRESULT CCryptoOperations<CCryptoProvider, CryptoProvider,
                                   ICryptoProvider>::CreateCertificationRequest(BSTR, ULONG, IBinaryObject*,
                                                                                IBinaryObject*, VARIANT,
                                                                                VARIANT, IBinaryObject**);
template HRESULT CCryptoOperations<CCryptoProvider, CryptoProvider,
                                   ICryptoProvider>::CreateCertificationRequestEx(BSTR, ULONG, IBinaryObject*,
                                                                                  IBinaryObject*, VARIANT,
                                                                                  VARIANT, BSTR*);
template HRESULT
CCryptoOperations<CCryptoProvider, CryptoProvider, ICryptoProvider>::CreateCertificationRequestExV2(
    BSTR, ULONG, IBinaryObject*, IBinaryObject*, VARIANT, VARIANT, VARIANT, BSTR*);
template HRESULT CCryptoOperations<CCryptoProvider, CryptoProvider,
                                   ICryptoProvider>::InstallCertificateResponse(BSTR, BSTR, ICertificate**);
template HRESULT CCryptoOperations<CCryptoProvider, CryptoProvider,
                                   ICryptoProvider>::InstallCertificateResponseEx(BSTR, BSTR, BSTR,
                                                                                  ICertificate**);

HRESULT CCryptoProvider::CopyKeyContainer(ICertificate* pCertificate, BSTR destination) {
    return serviceFrame(L"CCryptoProvider::CopyKeyContainer",
                        [&] { copyKeyContainer(*certificateOf(pCertificate), textOf(destination)); });
}

HRESULT CCryptoService::GenerateCertificateRenewalRequest(VARIANT_BOOL isPkcs7, ICertificate* pCertificate,
                                                          BSTR* request) {
    return serviceFrame(L"CCryptoService::GenerateCertificateRenewalRequest", [&] {
        give(request, getCertificateRenewalRequest(isPkcs7 != VARIANT_FALSE, *certificateOf(pCertificate)));
    });
}

HRESULT CCryptoService::EncodeDistinguishedName(BSTR text, IBinaryObject** name) {
    return serviceFrame(L"CCryptoService::EncodeDistinguishedName",
                        [&] { give(name, makeBinary(Crypto::encodeDistinguishedName(viewOf(text)))); });
}

HRESULT CCryptoService::EncodeExtensions(BSTR json, IBinaryObject** extensions) {
    return serviceFrame(L"CCryptoService::EncodeExtensions",
                        [&] { give(extensions, makeBinary(Crypto::encodeExtensionsJson(viewOf(json)))); });
}

HRESULT CCryptoService::DecodeCertificationRequest(IBinaryObject* pRequest, BSTR* description) {
    return serviceFrame(L"CCryptoService::DecodeCertificationRequest",
                        [&] { give(description, Crypto::getCertificationRequestJson(*bytesOf(pRequest))); });
}
