// The functions for whole messages: CryptSignMessage, those that verify, CryptEncryptMessage; and the public
// key of a provider's key.
#include "functions.h"

#include <vector>

namespace Corvane::Platform::Messages {
namespace {

constexpr DWORD usualEncoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;

class MessageHandle {
public:
    explicit MessageHandle(HCRYPTMSG handle) : handle_(must(handle)) {}
    ~MessageHandle() { close(handle_); }
    MessageHandle(const MessageHandle&) = delete;
    MessageHandle& operator=(const MessageHandle&) = delete;

    HCRYPTMSG get() const { return handle_; }
    void add(View bytes, bool isFinal) { must(update(handle_, bytes.data(), sizeOf(bytes), isFinal)); }
    Bytes param(DWORD type, DWORD index = 0) const {
        DWORD size = 0;
        must(getParam(handle_, type, index, nullptr, &size));
        Bytes bytes(size);
        must(getParam(handle_, type, index, bytes.data(), &size));
        return bytes;
    }
    DWORD number(DWORD type) const {
        DWORD value = 0;
        DWORD size = sizeof value;
        must(getParam(handle_, type, 0, &value, &size));
        return value;
    }

private:
    HCRYPTMSG handle_;
};

// The private key of a certificate, with its provider.
struct PrivateKey {
    explicit PrivateKey(PCCERT_CONTEXT certificate) {
        BOOL isOwned = FALSE;
        HCRYPTPROV found = 0;
        must(::CryptAcquireCertificatePrivateKey(certificate, 0, nullptr, &found, &spec, &isOwned));
        if (!isOwned)
            ::CryptContextAddRef(found, nullptr, 0);
        provider = CryptProvider(found);
    }
    CryptProvider provider;
    DWORD spec = 0;
};

struct SignedInfo {
    explicit SignedInfo(const CRYPT_SIGN_MESSAGE_PARA& how) : key(how.pSigningCert) {
        for (DWORD i = 0; i < how.cMsgCert; ++i)
            certificates.push_back({how.rgpMsgCert[i]->cbCertEncoded, how.rgpMsgCert[i]->pbCertEncoded});
        info.cbSize = sizeof info;
        info.cCertEncoded = static_cast<DWORD>(certificates.size());
        info.rgCertEncoded = certificates.data();
        signer.cbSize = sizeof signer;
        signer.pCertInfo = how.pSigningCert->pCertInfo;
        signer.hCryptProv = key.provider.get();
        signer.dwKeySpec = key.spec;
        signer.HashAlgorithm = how.HashAlgorithm;
        signer.cAuthAttr = how.cAuthAttr;
        signer.cUnauthAttr = how.cUnauthAttr;
        info.cSigners = 1;
        info.rgSigners = &signer;
    }

    CMSG_SIGNED_ENCODE_INFO info{};
    CMSG_SIGNER_ENCODE_INFO signer{};
    std::vector<CRYPT_DATA_BLOB> certificates;
    PrivateKey key;
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
    const CertificateStoreHandle store(
        must(openStore(CERT_STORE_PROV_MSG, usualEncoding, 0, 0, message.get())));
    PCCERT_CONTEXT certificate =
        how.pfnGetSignerCertificate
            ? how.pfnGetSignerCertificate(how.pvGetArg, how.dwMsgAndCertEncodingType, info, store.get())
            : getSubjectCertificate(store.get(), how.dwMsgAndCertEncodingType, info);
    return certificate ? certificate : (fail(CRYPT_E_NOT_FOUND), nullptr);
}

void verifySigner(const CRYPT_VERIFY_MESSAGE_PARA& how, const MessageHandle& message, DWORD index,
                  PCCERT_CONTEXT* signer) {
    CertificateContext certificate(findSigner(how, message, index));
    CMSG_CTRL_VERIFY_SIGNATURE_EX_PARA argument{};
    argument.cbSize = sizeof argument;
    argument.dwSignerIndex = index;
    argument.dwSignerType = CMSG_VERIFY_SIGNER_CERT;
    argument.pvSigner = const_cast<CERT_CONTEXT*>(certificate.get());
    must(control(message.get(), 0, CMSG_CTRL_VERIFY_SIGNATURE_EX, &argument));
    if (signer)
        *signer = certificate.detach();
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
        info.cRecipients = count;
        info.rgpRecipients = infos.data();
        MessageHandle message(
            openToEncode(how->dwMsgEncodingType, 0, CMSG_ENVELOPED, &info, nullptr, nullptr));
        message.add({data, dataSize}, true);
        Answer(buffer, size).give(message.param(CMSG_CONTENT_PARAM));
    });
}

// Windows finds the function that a provider registered by the key's algorithm.
BOOL WINAPI exportPublicKeyInfo(HCRYPTPROV_OR_NCRYPT_KEY_HANDLE provider, DWORD spec, DWORD encoding,
                                PCERT_PUBLIC_KEY_INFO info, DWORD* size) {
    CryptKey key;
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
