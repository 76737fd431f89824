#include "functions.h"

#include "message.h"

#include <vector>

namespace Corvane::Platform::Messages {
namespace {

// Nobody here has messages of the system's own.
Message& messageOf(const void* handle) {
    return *static_cast<Message*>(const_cast<void*>(handle));
}

Bytes parameter(Message& message, DWORD type, DWORD index = 0) {
    return filled([&](BYTE* buffer, DWORD* size) {
        message.parameter(type, index, Answer(buffer, size));
        return true;
    });
}

DWORD number(Message& message, DWORD type) {
    return *reinterpret_cast<const DWORD*>(parameter(message, type).data());
}

// A store with the message's certificates.
CertificateStoreHandle storeOf(Message& message) {
    CertificateStoreHandle store(must(::CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr)));
    for (DWORD i = 0, count = number(message, CMSG_CERT_COUNT_PARAM); i < count; ++i) {
        const Bytes certificate = parameter(message, CMSG_CERT_PARAM, i);
        // What is no X.509 certificate stays out, as on Windows.
        ::CertAddEncodedCertificateToStore(store.get(), X509_ASN_ENCODING, certificate.data(),
                                           lengthOf(certificate), CERT_STORE_ADD_USE_EXISTING, nullptr);
    }
    return store;
}

template <class Make>
HCRYPTMSG opened(DWORD encoding, Make make) {
    HCRYPTMSG handle = nullptr;
    succeeds([&] {
        if (!(encoding & PKCS_7_ASN_ENCODING))
            fail(E_INVALIDARG);
        handle = make().release();
    });
    return handle;
}

HCRYPTMSG WINAPI openToEncode(DWORD encoding, DWORD flags, DWORD type, const void* info, LPSTR,
                              PCMSG_STREAM_INFO stream) {
    return opened(encoding, [&] {
        return type == CMSG_SIGNED
                   ? encodeSigned(flags, *static_cast<const CMSG_SIGNED_ENCODE_INFO*>(info), stream)
                   : encodeEnveloped(*static_cast<const CMSG_ENVELOPED_ENCODE_INFO*>(info), stream);
    });
}

HCRYPTMSG WINAPI openToDecode(DWORD encoding, DWORD flags, DWORD, HCRYPTPROV_LEGACY, PCERT_INFO,
                              PCMSG_STREAM_INFO stream) {
    return opened(encoding, [&] { return decode((flags & CMSG_DETACHED_FLAG) != 0, stream); });
}

BOOL WINAPI close(HCRYPTMSG handle) {
    const DWORD error = ::GetLastError();
    delete static_cast<Message*>(handle);
    ::SetLastError(error);
    return TRUE;
}

BOOL WINAPI update(HCRYPTMSG handle, const BYTE* data, DWORD size, BOOL isFinal) {
    return succeeds([&] { messageOf(handle).update(View(data, size), isFinal != FALSE); });
}

BOOL WINAPI getParam(HCRYPTMSG handle, DWORD type, DWORD index, void* buffer, DWORD* size) {
    return succeeds([&] { messageOf(handle).parameter(type, index, Answer(buffer, size)); });
}

BOOL WINAPI control(HCRYPTMSG handle, DWORD, DWORD type, const void* argument) {
    return succeeds([&] { messageOf(handle).control(type, argument); });
}

HCERTSTORE WINAPI openStore(LPCSTR provider, DWORD encoding, HCRYPTPROV_LEGACY context, DWORD flags,
                            const void* argument) {
    if (provider != CERT_STORE_PROV_MSG)
        return ::CertOpenStore(provider, encoding, context, flags, argument);
    HCERTSTORE store = nullptr;
    succeeds([&] { store = storeOf(messageOf(argument)).detach(); });
    return store;
}

// A name that stands for a key identifier finds by that, as on Windows.
PCCERT_CONTEXT WINAPI getSubjectCertificate(HCERTSTORE store, DWORD encoding, PCERT_INFO id) {
    CRYPT_DATA_BLOB keyIdentifier{};
    succeeds([&] {
        Reader name = Reader(id ? viewOf(id->Issuer) : View()).enter(Tag::sequence);
        Reader attribute = name.enter(Tag::set).enter(Tag::sequence);
        if (oidText(attribute.next(Tag::oid).content) == Oid::keyIdentifierName) {
            const View value = attribute.next(Tag::octetString).content;
            keyIdentifier = {lengthOf(value), const_cast<BYTE*>(value.data())};
        }
    });
    return keyIdentifier.cbData ? ::CertFindCertificateInStore(store, encoding, 0, CERT_FIND_KEY_IDENTIFIER,
                                                               &keyIdentifier, nullptr)
                                : ::CertGetSubjectCertificateFromStore(store, encoding, id);
}

void makeAtOnce(Message& message, View content, BYTE* buffer, DWORD* size) {
    message.update(content, true);
    message.parameter(CMSG_CONTENT_PARAM, 0, Answer(buffer, size));
}

// One that was read, and is signed.
OwnedMessage decoded(bool isDetached, View bytes) {
    OwnedMessage message = decode(isDetached, nullptr);
    message->update(bytes, true);
    return number(*message, CMSG_TYPE_PARAM) == CMSG_SIGNED ? std::move(message)
                                                            : (fail(CRYPT_E_UNEXPECTED_MSG_TYPE), nullptr);
}

// By the certificate that the caller's function has for the signer.
void verifySigner(const CRYPT_VERIFY_MESSAGE_PARA& how, Message& message, DWORD index,
                  PCCERT_CONTEXT* signer) {
    if (index >= number(message, CMSG_SIGNER_COUNT_PARAM))
        fail(CRYPT_E_NO_SIGNER);
    Bytes identity = parameter(message, CMSG_SIGNER_CERT_INFO_PARAM, index);
    auto* const info = reinterpret_cast<CERT_INFO*>(identity.data());
    const CertificateStoreHandle store = storeOf(message);
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
    message.control(CMSG_CTRL_VERIFY_SIGNATURE_EX, &argument);
    if (signer)
        *signer = certificate.detach();
}

BOOL WINAPI signMessage(PCRYPT_SIGN_MESSAGE_PARA how, BOOL isDetached, DWORD count, const BYTE* data[],
                        DWORD sizes[], BYTE* buffer, DWORD* size) {
    return succeeds([&] {
        std::vector<CRYPT_DATA_BLOB> certificates;
        for (const CERT_CONTEXT* one : std::span(how->rgpMsgCert, how->cMsgCert))
            certificates.push_back({one->cbCertEncoded, one->pbCertEncoded});
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
            owned.attach(signer.hCryptProv);
        CMSG_SIGNED_ENCODE_INFO info{};
        info.cSigners = 1;
        info.rgSigners = &signer;
        info.cCertEncoded = how->cMsgCert;
        info.rgCertEncoded = certificates.data();
        Bytes content;
        for (DWORD i = 0; i < count; ++i)
            append(content, View(data[i], sizes[i]));
        makeAtOnce(*encodeSigned(isDetached ? CMSG_DETACHED_FLAG : 0, info, nullptr), content, buffer, size);
    });
}

BOOL WINAPI verifyMessageSignature(PCRYPT_VERIFY_MESSAGE_PARA how, DWORD index, const BYTE* bytes,
                                   DWORD messageSize, BYTE* content, DWORD* contentSize,
                                   PCCERT_CONTEXT* signer) {
    return succeeds([&] {
        const OwnedMessage message = decoded(false, {bytes, messageSize});
        // As documented: of a message without content nothing is verified, and that is no failure.
        if (number(*message, hasContentParam))
            verifySigner(*how, *message, index, signer);
        if (contentSize)
            message->parameter(CMSG_CONTENT_PARAM, 0, Answer(content, contentSize));
    });
}

BOOL WINAPI verifyDetachedMessageSignature(PCRYPT_VERIFY_MESSAGE_PARA how, DWORD index, const BYTE* bytes,
                                           DWORD messageSize, DWORD count, const BYTE* data[], DWORD sizes[],
                                           PCCERT_CONTEXT* signer) {
    return succeeds([&] {
        const OwnedMessage message = decoded(true, {bytes, messageSize});
        for (DWORD i = 0; i < count; ++i)
            message->update({data[i], sizes[i]}, i == count - 1);
        verifySigner(*how, *message, index, signer);
    });
}

LONG WINAPI getMessageSignerCount(DWORD, const BYTE* bytes, DWORD size) {
    LONG count = -1;
    succeeds([&] {
        count = static_cast<LONG>(number(*decoded(false, {bytes, size}), CMSG_SIGNER_COUNT_PARAM));
    });
    return count;
}

BOOL WINAPI encryptMessage(PCRYPT_ENCRYPT_MESSAGE_PARA how, DWORD count, PCCERT_CONTEXT recipients[],
                           const BYTE* data, DWORD dataSize, BYTE* buffer, DWORD* size) {
    return succeeds([&] {
        std::vector<PCERT_INFO> infos;
        for (const CERT_CONTEXT* one : std::span(recipients, count))
            infos.push_back(one->pCertInfo);
        CMSG_ENVELOPED_ENCODE_INFO info{};
        info.hCryptProv = how->hCryptProv;
        info.ContentEncryptionAlgorithm = how->ContentEncryptionAlgorithm;
        info.cRecipients = count;
        info.rgpRecipients = infos.data();
        makeAtOnce(*encodeEnveloped(info, nullptr), {data, dataSize}, buffer, size);
    });
}

// Windows finds the function that a provider registered by the key's algorithm.
BOOL WINAPI exportPublicKeyInfo(HCRYPTPROV_OR_NCRYPT_KEY_HANDLE provider, DWORD spec, DWORD encoding,
                                PCERT_PUBLIC_KEY_INFO info, DWORD* size) {
    return succeeds([&] {
        CryptKey key;
        must(::CryptGetUserKey(provider, spec, key.put()));
        DWORD algorithm = numberOf([&](BYTE* value, DWORD* room) {
            return ::CryptGetKeyParam(key.get(), KP_ALGID, value, room, 0);
        });
        const CRYPT_OID_INFO* const known =
            ::CryptFindOIDInfo(CRYPT_OID_INFO_ALGID_KEY, &algorithm, CRYPT_PUBKEY_ALG_OID_GROUP_ID);
        const bool isOurs = known && algorithm != CALG_RSA_KEYX && algorithm != CALG_RSA_SIGN;
        must(isOurs ? ::CryptExportPublicKeyInfoEx(provider, spec, encoding, const_cast<char*>(known->pszOID),
                                                   0, nullptr, info, size)
                    : ::CryptExportPublicKeyInfo(provider, spec, encoding, info, size));
    });
}

template <class Function>
Replacement by(std::string_view name, Function* function) {
    return {name, reinterpret_cast<void*>(function)};
}

}  // namespace

std::span<const Replacement> replacements() {
    static const Replacement all[] = {
        by("CertGetSubjectCertificateFromStore", getSubjectCertificate),
        by("CertOpenStore", openStore),
        by("CryptEncryptMessage", encryptMessage),
        by("CryptExportPublicKeyInfo", exportPublicKeyInfo),
        by("CryptGetMessageSignerCount", getMessageSignerCount),
        by("CryptMsgClose", close),
        by("CryptMsgControl", control),
        by("CryptMsgGetParam", getParam),
        by("CryptMsgOpenToDecode", openToDecode),
        by("CryptMsgOpenToEncode", openToEncode),
        by("CryptMsgUpdate", update),
        by("CryptSignMessage", signMessage),
        by("CryptVerifyDetachedMessageSignature", verifyDetachedMessageSignature),
        by("CryptVerifyMessageSignature", verifyMessageSignature),
    };
    return all;
}

}  // namespace Corvane::Platform::Messages
