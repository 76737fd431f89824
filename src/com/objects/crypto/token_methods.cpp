// The methods of CryptoService and CryptoProvider about tokens.
#include "com/async/async.h"
#include "com/objects/binary/binary_object.h"
#include "com/objects/crypto/crypto_provider.h"
#include "com/objects/crypto/crypto_service.h"
#include "com/runtime/arguments.h"
#include "crypto/enroll/certificate_response.h"
#include "token/discovery/driver_version.h"
#include "token/discovery/token_containers.h"
#include "token/discovery/tokens_info.h"
#include "token/enroll/install_certificate.h"
#include "token/enroll/pin.h"
#include "token/enroll/request_on_token.h"

#include <string>

using namespace Corvane;
using namespace Corvane::Com;

namespace {

auto tellingTokens() {
    return Operation{L"Corvane::Crypto::getTokensInfo", [] { return Crypto::getTokensInfo(); }};
}

std::wstring requestOnToken(BSTR slot, BSTR pin, const Bytes& name, const Bytes& extensions,
                            const Bytes* enrollmentParameters) {
    return createCertificationRequestGOST(std::wstring(viewOf(slot)), Corvane::detail::pinText(viewOf(pin)),
                                          {name, extensions, enrollmentParameters});
}

}  // namespace

HRESULT CCryptoService::GetTokensInfo(BSTR* info) {
    return serviceFrame(L"CCryptoService::GetTokensInfo", [&] { run(info, tellingTokens()); });
}

HRESULT CCryptoService::GetTokensInfoAsync(IDispatch* pCallback) {
    return serviceFrame(L"CCryptoService::GetTokensInfoAsync", [&] { start(pCallback, tellingTokens()); });
}

HRESULT CCryptoService::GetTokenDriverVersion(BSTR guid, BSTR* version) {
    return serviceFrame(L"CCryptoService::GetTokenDriverVersion",
                        [&] { give(version, Crypto::getTokenDriverVersion(viewOf(guid))); });
}

HRESULT CCryptoService::GetTokenContainers(BSTR tokenId, BSTR* containers) {
    return serviceFrame(L"CCryptoService::GetTokenContainers",
                        [&] { give(containers, Crypto::getTokenContainers(std::wstring(viewOf(tokenId)))); });
}

HRESULT CCryptoProvider::CreateCertificationRequestGOST(BSTR slot, BSTR pin,
                                                        IBinaryObject* pDistinguishedName,
                                                        IBinaryObject* pExtensions, BSTR* request) {
    return serviceFrame(L"CCryptoProvider::CreateCertificationRequestGOST", [&] {
        const SharedBytes name = bytesOf(pDistinguishedName);
        const SharedBytes extensions = bytesOf(pExtensions);
        give(request, requestOnToken(slot, pin, *name, *extensions, nullptr));
    });
}

HRESULT CCryptoProvider::CreateCertificationRequestGOSTV2(BSTR slot, BSTR pin,
                                                          IBinaryObject* pDistinguishedName,
                                                          IBinaryObject* pExtensions,
                                                          VARIANT pEnrollmentParameters, BSTR* request) {
    return serviceFrame(L"CCryptoProvider::CreateCertificationRequestGOSTV2", [&] {
        const SharedBytes name = bytesOf(pDistinguishedName);
        const SharedBytes extensions = bytesOf(pExtensions);
        const SharedBytes parameters = optionalBytesOf(pEnrollmentParameters);
        give(request, requestOnToken(slot, pin, *name, *extensions, parameters.get()));
    });
}

HRESULT CCryptoProvider::InstallCertificateResponseGOST(BSTR response, BSTR containerPath, BSTR pin) {
    return serviceFrame(L"CCryptoProvider::InstallCertificateResponseGOST", [&] {
        installCertificateResponseGOST(
            viewOf(response), std::wstring(viewOf(containerPath)), Corvane::detail::pinText(viewOf(pin)),
            [](std::wstring_view text) { return Corvane::detail::queryCertificate(text).getContent(); });
    });
}
