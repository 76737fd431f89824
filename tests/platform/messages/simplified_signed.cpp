// CryptSignMessage, the functions that verify, and what they tell of a signed message.
#include "simplified.h"

#include <optional>
#include <vector>

namespace Corvane::Platform::Messages {
namespace {

struct SignedInfo {
    explicit SignedInfo(const CRYPT_SIGN_MESSAGE_PARA& how) {
        for (DWORD i = 0; i < how.cMsgCert; ++i)
            certificates.push_back({how.rgpMsgCert[i]->cbCertEncoded, how.rgpMsgCert[i]->pbCertEncoded});
        for (DWORD i = 0; i < how.cMsgCrl; ++i)
            crls.push_back({how.rgpMsgCrl[i]->cbCrlEncoded, how.rgpMsgCrl[i]->pbCrlEncoded});
        info.cbSize = sizeof info;
        info.cCertEncoded = static_cast<DWORD>(certificates.size());
        info.rgCertEncoded = certificates.data();
        info.cCrlEncoded = static_cast<DWORD>(crls.size());
        info.rgCrlEncoded = crls.data();
        if (!how.pSigningCert)
            return;
        key.emplace(how.pSigningCert);
        signer.cbSize = sizeof signer;
        signer.pCertInfo = how.pSigningCert->pCertInfo;
        signer.hCryptProv = key->provider.get();
        signer.dwKeySpec = key->spec;
        signer.HashAlgorithm = how.HashAlgorithm;
        signer.cAuthAttr = how.cAuthAttr;
        signer.rgAuthAttr = how.rgAuthAttr;
        signer.cUnauthAttr = how.cUnauthAttr;
        signer.rgUnauthAttr = how.rgUnauthAttr;
        info.cSigners = 1;
        info.rgSigners = &signer;
    }

    CMSG_SIGNED_ENCODE_INFO info{};
    CMSG_SIGNER_ENCODE_INFO signer{};
    std::vector<CRYPT_DATA_BLOB> certificates, crls;
    std::optional<PrivateKey> key;
};

Bytes joined(DWORD count, const BYTE* const data[], const DWORD sizes[]) {
    Bytes all;
    for (DWORD i = 0; i < count; ++i)
        append(all, View(data[i], sizes[i]));
    return all;
}

// The certificate that the caller's function, or the message, has for the signer.
PCCERT_CONTEXT findSigner(const CRYPT_VERIFY_MESSAGE_PARA& how, const MessageHandle& message, DWORD index) {
    if (index >= message.number(CMSG_SIGNER_COUNT_PARAM))
        fail(CRYPT_E_NO_SIGNER);
    Bytes identity = message.param(CMSG_SIGNER_CERT_INFO_PARAM, index);
    auto* const info = reinterpret_cast<CERT_INFO*>(identity.data());
    const Store store(openStore(CERT_STORE_PROV_MSG, usualEncoding, 0, 0, message.get()));
    PCCERT_CONTEXT certificate =
        how.pfnGetSignerCertificate
            ? how.pfnGetSignerCertificate(how.pvGetArg, how.dwMsgAndCertEncodingType, info, store.handle)
            : getSubjectCertificate(store.handle, how.dwMsgAndCertEncodingType, info);
    return certificate ? certificate : (fail(CRYPT_E_NOT_FOUND), nullptr);
}

void verifySigner(const CRYPT_VERIFY_MESSAGE_PARA& how, const MessageHandle& message, DWORD index,
                  PCCERT_CONTEXT* signer) {
    PCCERT_CONTEXT const certificate = findSigner(how, message, index);
    CMSG_CTRL_VERIFY_SIGNATURE_EX_PARA argument{};
    argument.cbSize = sizeof argument;
    argument.dwSignerIndex = index;
    argument.dwSignerType = CMSG_VERIFY_SIGNER_CERT;
    argument.pvSigner = const_cast<CERT_CONTEXT*>(certificate);
    const BOOL isGood = control(message.get(), 0, CMSG_CTRL_VERIFY_SIGNATURE_EX, &argument);
    const DWORD error = ::GetLastError();
    if (isGood && signer)
        *signer = certificate;
    else
        ::CertFreeCertificateContext(certificate);
    if (!isGood)
        throw Failure{error};
}

void checkSigned(const MessageHandle& message) {
    if (message.number(CMSG_TYPE_PARAM) != CMSG_SIGNED)
        fail(CRYPT_E_UNEXPECTED_MSG_TYPE);
}

}  // namespace

BOOL WINAPI signMessage(PCRYPT_SIGN_MESSAGE_PARA how, BOOL isDetached, DWORD count, const BYTE* data[],
                        DWORD sizes[], BYTE* buffer, DWORD* size) {
    return succeeds([&] {
        const SignedInfo info(*how);
        const Bytes content = joined(count, data, sizes);
        const DWORD flags = isDetached ? CMSG_DETACHED_FLAG : 0;
        if (!buffer) {
            *size = static_cast<DWORD>(signedSize(flags, info.info, sizeOf(content)));
            return;
        }
        MessageHandle message(
            openToEncode(how->dwMsgEncodingType, flags, CMSG_SIGNED, &info.info, nullptr, nullptr));
        message.add(content, true);
        Answer(buffer, size).give(message.param(CMSG_CONTENT_PARAM));
    });
}

BOOL WINAPI verifyMessageSignature(PCRYPT_VERIFY_MESSAGE_PARA how, DWORD index, const BYTE* bytes,
                                   DWORD messageSize, BYTE* content, DWORD* contentSize,
                                   PCCERT_CONTEXT* signer) {
    if (signer)
        *signer = nullptr;
    return succeeds([&] {
        MessageHandle message(openToDecode(how->dwMsgAndCertEncodingType, 0, 0, 0, nullptr, nullptr));
        message.add({bytes, messageSize}, true);
        checkSigned(message);
        // As documented: of a message without content nothing is verified, and that is no failure.
        if (message.number(hasContentParam))
            verifySigner(*how, message, index, signer);
        if (contentSize)
            Answer(content, contentSize).give(message.param(CMSG_CONTENT_PARAM));
    });
}

BOOL WINAPI verifyDetachedMessageSignature(PCRYPT_VERIFY_MESSAGE_PARA how, DWORD index, const BYTE* bytes,
                                           DWORD messageSize, DWORD count, const BYTE* data[], DWORD sizes[],
                                           PCCERT_CONTEXT* signer) {
    if (signer)
        *signer = nullptr;
    return succeeds([&] {
        MessageHandle message(
            openToDecode(how->dwMsgAndCertEncodingType, CMSG_DETACHED_FLAG, 0, 0, nullptr, nullptr));
        message.add({bytes, messageSize}, true);
        checkSigned(message);
        for (DWORD i = 0; i < count; ++i)
            message.add({data[i], sizes[i]}, false);
        message.add({}, true);
        verifySigner(*how, message, index, signer);
    });
}

LONG WINAPI getMessageSignerCount(DWORD encoding, const BYTE* bytes, DWORD size) {
    DWORD count = 0;
    const bool done = succeeds([&] {
        MessageHandle message(openToDecode(encoding, 0, 0, 0, nullptr, nullptr));
        message.add({bytes, size}, true);
        checkSigned(message);
        count = message.number(CMSG_SIGNER_COUNT_PARAM);
    });
    return done ? static_cast<LONG>(count) : -1;
}

HCERTSTORE WINAPI getMessageCertificates(DWORD encoding, HCRYPTPROV_LEGACY, DWORD, const BYTE* bytes,
                                         DWORD size) {
    HCERTSTORE store = nullptr;
    succeeds([&] {
        MessageHandle message(openToDecode(encoding, 0, 0, 0, nullptr, nullptr));
        message.add({bytes, size}, true);
        checkSigned(message);
        store = openStore(CERT_STORE_PROV_MSG, encoding, 0, 0, message.get());
    });
    return store;
}

}  // namespace Corvane::Platform::Messages
