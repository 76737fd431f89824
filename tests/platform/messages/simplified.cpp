// The functions for whole messages: CryptSignMessage, those that verify, CryptEncryptMessage; and the public
// key of a provider's key.
#include "functions.h"

#include <vector>

namespace Corvane::Platform::Messages {
namespace {

class MessageHandle {
public:
    explicit MessageHandle(HCRYPTMSG handle) : handle_(must(handle)) {}
    ~MessageHandle() { close(handle_); }
    MessageHandle(MessageHandle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    MessageHandle& operator=(MessageHandle&&) = delete;

    HCRYPTMSG get() const { return handle_; }
    void add(View bytes, bool isFinal) { must(update(handle_, bytes.data(), lengthOf(bytes), isFinal)); }
    Bytes param(DWORD type, DWORD index = 0) const {
        return filled(
            [&](BYTE* buffer, DWORD* size) { return getParam(handle_, type, index, buffer, size); });
    }
    DWORD number(DWORD type) const {
        return numberOf([&](BYTE* value, DWORD* size) { return getParam(handle_, type, 0, value, size); });
    }

private:
    HCRYPTMSG handle_;
};

// A message of one piece.
BOOL encode(DWORD encoding, DWORD flags, DWORD type, const void* info, View content, BYTE* buffer,
            DWORD* size) {
    MessageHandle message(openToEncode(encoding, flags, type, info, nullptr, nullptr));
    message.add(content, true);
    return must(getParam(message.get(), CMSG_CONTENT_PARAM, 0, buffer, size));
}

// One that was read, and is signed.
MessageHandle decoded(DWORD encoding, DWORD flags, View bytes) {
    MessageHandle message(openToDecode(encoding, flags, 0, 0, nullptr, nullptr));
    message.add(bytes, true);
    if (message.number(CMSG_TYPE_PARAM) != CMSG_SIGNED)
        fail(CRYPT_E_UNEXPECTED_MSG_TYPE);
    return message;
}

// By the certificate that the caller's function, or the message, has for the signer.
void verifySigner(const CRYPT_VERIFY_MESSAGE_PARA& how, const MessageHandle& message, DWORD index,
                  PCCERT_CONTEXT* signer) {
    if (index >= message.number(CMSG_SIGNER_COUNT_PARAM))
        fail(CRYPT_E_NO_SIGNER);
    Bytes identity = message.param(CMSG_SIGNER_CERT_INFO_PARAM, index);
    auto* const info = reinterpret_cast<CERT_INFO*>(identity.data());
    const CertificateStoreHandle store(must(openStore(CERT_STORE_PROV_MSG, encodings, 0, 0, message.get())));
    CertificateContext certificate(
        how.pfnGetSignerCertificate
            ? how.pfnGetSignerCertificate(how.pvGetArg, how.dwMsgAndCertEncodingType, info, store.get())
            : getSubjectCertificate(store.get(), how.dwMsgAndCertEncodingType, info));
    if (!certificate)
        fail(CRYPT_E_NOT_FOUND);
    CMSG_CTRL_VERIFY_SIGNATURE_EX_PARA argument{};
    argument.dwSignerIndex = index;
    argument.dwSignerType = CMSG_VERIFY_SIGNER_CERT;
    argument.pvSigner = const_cast<CERT_CONTEXT*>(certificate.get());
    must(control(message.get(), 0, CMSG_CTRL_VERIFY_SIGNATURE_EX, &argument));
    if (signer)
        *signer = certificate.detach();
}

}  // namespace

BOOL WINAPI signMessage(PCRYPT_SIGN_MESSAGE_PARA how, BOOL isDetached, DWORD count, const BYTE* data[],
                        DWORD sizes[], BYTE* buffer, DWORD* size) {
    return succeeds([&] {
        std::vector<CRYPT_DATA_BLOB> certificates;
        for (DWORD i = 0; i < how->cMsgCert; ++i)
            certificates.push_back({how->rgpMsgCert[i]->cbCertEncoded, how->rgpMsgCert[i]->pbCertEncoded});
        CMSG_SIGNER_ENCODE_INFO signer{};
        signer.pCertInfo = how->pSigningCert->pCertInfo;
        signer.HashAlgorithm = how->HashAlgorithm;
        signer.cAuthAttr = how->cAuthAttr;
        signer.cUnauthAttr = how->cUnauthAttr;
        CryptProvider owned;
        BOOL isOwned = FALSE;
        must(::CryptAcquireCertificatePrivateKey(how->pSigningCert, 0, nullptr, &signer.hCryptProv,
                                                 &signer.dwKeySpec, &isOwned));
        if (isOwned)
            *owned.put() = signer.hCryptProv;
        CMSG_SIGNED_ENCODE_INFO info{};
        info.cSigners = 1;
        info.rgSigners = &signer;
        info.cCertEncoded = how->cMsgCert;
        info.rgCertEncoded = certificates.data();
        Bytes content;
        for (DWORD i = 0; i < count; ++i)
            append(content, View(data[i], sizes[i]));
        encode(how->dwMsgEncodingType, isDetached ? CMSG_DETACHED_FLAG : 0, CMSG_SIGNED, &info, content,
               buffer, size);
    });
}

BOOL WINAPI verifyMessageSignature(PCRYPT_VERIFY_MESSAGE_PARA how, DWORD index, const BYTE* bytes,
                                   DWORD messageSize, BYTE* content, DWORD* contentSize,
                                   PCCERT_CONTEXT* signer) {
    if (signer)
        *signer = nullptr;
    return succeeds([&] {
        const MessageHandle message = decoded(how->dwMsgAndCertEncodingType, 0, {bytes, messageSize});
        // As documented: of a message without content nothing is verified, and that is no failure.
        if (message.number(hasContentParam))
            verifySigner(*how, message, index, signer);
        if (contentSize)
            must(getParam(message.get(), CMSG_CONTENT_PARAM, 0, content, contentSize));
    });
}

BOOL WINAPI verifyDetachedMessageSignature(PCRYPT_VERIFY_MESSAGE_PARA how, DWORD index, const BYTE* bytes,
                                           DWORD messageSize, DWORD count, const BYTE* data[], DWORD sizes[],
                                           PCCERT_CONTEXT* signer) {
    if (signer)
        *signer = nullptr;
    return succeeds([&] {
        MessageHandle message =
            decoded(how->dwMsgAndCertEncodingType, CMSG_DETACHED_FLAG, {bytes, messageSize});
        for (DWORD i = 0; i < count; ++i)
            message.add({data[i], sizes[i]}, false);
        message.add({}, true);
        verifySigner(*how, message, index, signer);
    });
}

LONG WINAPI getMessageSignerCount(DWORD encoding, const BYTE* bytes, DWORD size) {
    LONG count = -1;
    succeeds([&] {
        count = static_cast<LONG>(decoded(encoding, 0, {bytes, size}).number(CMSG_SIGNER_COUNT_PARAM));
    });
    return count;
}

BOOL WINAPI encryptMessage(PCRYPT_ENCRYPT_MESSAGE_PARA how, DWORD count, PCCERT_CONTEXT recipients[],
                           const BYTE* data, DWORD dataSize, BYTE* buffer, DWORD* size) {
    return succeeds([&] {
        std::vector<PCERT_INFO> infos;
        for (DWORD i = 0; i < count; ++i)
            infos.push_back(recipients[i]->pCertInfo);
        CMSG_ENVELOPED_ENCODE_INFO info{};
        info.hCryptProv = how->hCryptProv;
        info.ContentEncryptionAlgorithm = how->ContentEncryptionAlgorithm;
        info.cRecipients = count;
        info.rgpRecipients = infos.data();
        encode(how->dwMsgEncodingType, 0, CMSG_ENVELOPED, &info, {data, dataSize}, buffer, size);
    });
}

// Windows finds the function that a provider registered by the key's algorithm.
BOOL WINAPI exportPublicKeyInfo(HCRYPTPROV_OR_NCRYPT_KEY_HANDLE provider, DWORD spec, DWORD encoding,
                                PCERT_PUBLIC_KEY_INFO info, DWORD* size) {
    return succeeds([&] {
        CryptKey key;
        must(::CryptGetUserKey(provider, spec, key.put()));
        DWORD algorithm = numberOf([&](BYTE* number, DWORD* room) {
            return ::CryptGetKeyParam(key.get(), KP_ALGID, number, room, 0);
        });
        const CRYPT_OID_INFO* const known =
            ::CryptFindOIDInfo(CRYPT_OID_INFO_ALGID_KEY, &algorithm, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
        const bool isOurs = known && algorithm != CALG_RSA_KEYX && algorithm != CALG_RSA_SIGN;
        must(isOurs ? ::CryptExportPublicKeyInfoEx(provider, spec, encoding, const_cast<char*>(known->pszOID),
                                                   0, nullptr, info, size)
                    : ::CryptExportPublicKeyInfo(provider, spec, encoding, info, size));
    });
}

}  // namespace Corvane::Platform::Messages
