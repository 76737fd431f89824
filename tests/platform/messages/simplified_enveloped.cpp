// CryptEncryptMessage, CryptDecryptMessage, and the public key of a provider's key.
#include "simplified.h"

#include <vector>

namespace Corvane::Platform::Messages {
namespace {

// The first recipient whose certificate is in one of the stores.
PCCERT_CONTEXT findRecipient(const CRYPT_DECRYPT_MESSAGE_PARA& how, const MessageHandle& message,
                             DWORD* index) {
    const DWORD count = message.number(CMSG_RECIPIENT_COUNT_PARAM);
    for (*index = 0; *index < count; ++*index) {
        Bytes identity = message.param(CMSG_RECIPIENT_INFO_PARAM, *index);
        for (DWORD i = 0; i < how.cCertStore; ++i) {
            if (PCCERT_CONTEXT found =
                    getSubjectCertificate(how.rghCertStore[i], how.dwMsgAndCertEncodingType,
                                          reinterpret_cast<CERT_INFO*>(identity.data())))
                return found;
        }
    }
    fail(CRYPT_E_NO_DECRYPT_CERT);
}

}  // namespace

BOOL WINAPI encryptMessage(PCRYPT_ENCRYPT_MESSAGE_PARA how, DWORD count, PCCERT_CONTEXT recipients[],
                           const BYTE* data, DWORD dataSize, BYTE* buffer, DWORD* size) {
    return succeeds([&] {
        std::vector<PCERT_INFO> infos;
        for (DWORD i = 0; i < count; ++i)
            infos.push_back(recipients[i]->pCertInfo);
        CMSG_ENVELOPED_ENCODE_INFO info{};
        info.cbSize = sizeof info;
        info.hCryptProv = how->hCryptProv;
        info.ContentEncryptionAlgorithm = how->ContentEncryptionAlgorithm;
        info.pvEncryptionAuxInfo = how->pvEncryptionAuxInfo;
        info.cRecipients = count;
        info.rgpRecipients = infos.data();
        MessageHandle message(
            openToEncode(how->dwMsgEncodingType, 0, CMSG_ENVELOPED, &info, nullptr, nullptr));
        message.add({data, dataSize}, true);
        Answer(buffer, size).give(message.param(CMSG_CONTENT_PARAM));
    });
}

BOOL WINAPI decryptMessage(PCRYPT_DECRYPT_MESSAGE_PARA how, const BYTE* bytes, DWORD messageSize,
                           BYTE* buffer, DWORD* size, PCCERT_CONTEXT* certificate) {
    if (certificate)
        *certificate = nullptr;
    return succeeds([&] {
        MessageHandle message(openToDecode(how->dwMsgAndCertEncodingType, 0, 0, 0, nullptr, nullptr));
        message.add({bytes, messageSize}, true);
        if (message.number(CMSG_TYPE_PARAM) != CMSG_ENVELOPED)
            fail(CRYPT_E_UNEXPECTED_MSG_TYPE);
        CMSG_CTRL_DECRYPT_PARA argument{};
        argument.cbSize = sizeof argument;
        PCCERT_CONTEXT const found = findRecipient(*how, message, &argument.dwRecipientIndex);
        const bool done = succeeds([&] {
            const PrivateKey key(found);
            argument.hCryptProv = key.provider.get();
            argument.dwKeySpec = key.spec;
            must(control(message.get(), 0, CMSG_CTRL_DECRYPT, &argument));
            if (size)
                Answer(buffer, size).give(message.param(CMSG_CONTENT_PARAM));
        });
        const DWORD error = ::GetLastError();
        if (done && certificate)
            *certificate = found;
        else
            ::CertFreeCertificateContext(found);
        if (!done)
            throw Failure{error};
    });
}

// Windows finds the function that a provider registered by the key's algorithm.
BOOL WINAPI exportPublicKeyInfo(HCRYPTPROV_OR_NCRYPT_KEY_HANDLE provider, DWORD spec, DWORD encoding,
                                PCERT_PUBLIC_KEY_INFO info, DWORD* size) {
    OwnedKey key;
    if (!::CryptGetUserKey(provider, spec, key.put()))
        return FALSE;
    ALG_ID algorithm = 0;
    DWORD room = sizeof algorithm;
    if (!::CryptGetKeyParam(key.get(), KP_ALGID, reinterpret_cast<BYTE*>(&algorithm), &room, 0))
        return FALSE;
    const CRYPT_OID_INFO* const known =
        ::CryptFindOIDInfo(CRYPT_OID_INFO_ALGID_KEY, &algorithm, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
    if (!known || algorithm == CALG_RSA_KEYX || algorithm == CALG_RSA_SIGN)
        return ::CryptExportPublicKeyInfo(provider, spec, encoding, info, size);
    return ::CryptExportPublicKeyInfoEx(provider, spec, encoding, const_cast<char*>(known->pszOID), 0,
                                        nullptr, info, size);
}

}  // namespace Corvane::Platform::Messages
