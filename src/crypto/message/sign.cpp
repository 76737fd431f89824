#include "core/log.h"
#include "core/two_pass.h"
#include "core/wide_text.h"
#include "crypto/api/encoding.h"
#include "crypto/api/message_size.h"
#include "crypto/message/crypto_api_provider.h"

namespace Corvane {
namespace {

// What goes into the message beside the signature.
Certificates messageCertificates(const Certificate& certificate, bool addCertChain) {
    if (addCertChain)
        return certificate.getCertificateChain();
    return {std::make_shared<Certificate>(certificate)};
}

}  // namespace

Bytes CryptoApiProvider::sign(const Bytes& data, const Certificate& certificate, bool attached,
                              bool addCertChain) const {
    writeLog(LogLevel::debug, L"Corvane::CryptoApiProvider::sign", L"provider name: ", record_.name,
             L"certificate: ", certificate, L", attached: ", attached);
    const Certificates included = messageCertificates(certificate, addCertChain);
    std::vector<PCCERT_CONTEXT> contexts;
    for (const SharedCertificate& one : included)
        contexts.push_back(one->context());
    std::string hash = toUtf8(record_.hash);

    CRYPT_SIGN_MESSAGE_PARA parameters{};
    parameters.cbSize = sizeof(parameters);
    parameters.dwMsgEncodingType = messageEncoding;
    parameters.pSigningCert = certificate.context();
    parameters.HashAlgorithm.pszObjId = hash.data();
    parameters.cMsgCert = static_cast<DWORD>(contexts.size());
    parameters.rgpMsgCert = contexts.data();

    const BYTE* blocks[] = {data.data()};
    DWORD sizes[] = {detail::messageSize(data)};
    return twoPass<BYTE>(E_CRYPTO_SIGN, L"CryptSignMessage", [&](BYTE* buffer, DWORD* size) {
        return ::CryptSignMessage(&parameters, !attached, 1, blocks, sizes, buffer, size);
    });
}

}  // namespace Corvane
