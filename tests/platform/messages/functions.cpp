#include "functions.h"

#include "../handles.h"
#include "message.h"

#include <vector>

namespace Corvane::Platform::Messages {
namespace {

// Messages that others opened are theirs: CryptQueryObject's, for instance.
Handles<Message>& open() {
    static Handles<Message> messages;
    return messages;
}

Message* find(const void* handle) {
    return open().find(reinterpret_cast<ULONG_PTR>(handle));
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
        handle = reinterpret_cast<HCRYPTMSG>(open().add(make()));
    });
    return handle;
}

HCRYPTMSG WINAPI openToEncode(DWORD encoding, DWORD flags, DWORD type, const void* info, LPSTR innerType,
                              PCMSG_STREAM_INFO stream) {
    return opened(encoding, [&] {
        if (!info || innerType)
            fail(E_INVALIDARG);
        if (type == CMSG_SIGNED)
            return encodeSigned(flags, *static_cast<const CMSG_SIGNED_ENCODE_INFO*>(info), stream);
        if (type == CMSG_ENVELOPED)
            return encodeEnveloped(*static_cast<const CMSG_ENVELOPED_ENCODE_INFO*>(info), stream);
        fail(CRYPT_E_INVALID_MSG_TYPE);
    });
}

HCRYPTMSG WINAPI openToDecode(DWORD encoding, DWORD flags, DWORD type, HCRYPTPROV_LEGACY, PCERT_INFO,
                              PCMSG_STREAM_INFO stream) {
    return opened(encoding, [&] {
        return type == 0 ? decode((flags & CMSG_DETACHED_FLAG) != 0, stream)
                         : (fail(E_INVALIDARG), OwnedMessage());
    });
}

BOOL WINAPI close(HCRYPTMSG handle) {
    if (handle && !find(handle))
        return ::CryptMsgClose(handle);
    const DWORD error = ::GetLastError();
    open().remove(reinterpret_cast<ULONG_PTR>(handle));
    ::SetLastError(error);
    return TRUE;
}

BOOL WINAPI update(HCRYPTMSG handle, const BYTE* data, DWORD size, BOOL isFinal) {
    Message* const message = find(handle);
    return message ? succeeds([&] { message->update(View(data, size), isFinal != FALSE); })
                   : ::CryptMsgUpdate(handle, data, size, isFinal);
}

BOOL WINAPI getParam(HCRYPTMSG handle, DWORD type, DWORD index, void* buffer, DWORD* size) {
    Message* const message = find(handle);
    return message ? succeeds([&] { message->parameter(type, index, Answer(buffer, size)); })
                   : ::CryptMsgGetParam(handle, type, index, buffer, size);
}

BOOL WINAPI control(HCRYPTMSG handle, DWORD flags, DWORD type, const void* argument) {
    Message* const message = find(handle);
    return message ? succeeds([&] { argument ? message->control(type, argument) : fail(E_INVALIDARG); })
                   : ::CryptMsgControl(handle, flags, type, argument);
}

HCERTSTORE WINAPI openStore(LPCSTR provider, DWORD encoding, HCRYPTPROV_LEGACY context, DWORD flags,
                            const void* argument) {
    Message* const message = provider == CERT_STORE_PROV_MSG ? find(argument) : nullptr;
    if (!message)
        return ::CertOpenStore(provider, encoding, context, flags, argument);
    HCERTSTORE store = nullptr;
    succeeds([&] { store = storeOf(*message).detach(); });
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
        for (DWORD i = 0; i < count; ++i)
            infos.push_back(recipients[i]->pCertInfo);
        CMSG_ENVELOPED_ENCODE_INFO info{};
        info.hCryptProv = how->hCryptProv;
        info.ContentEncryptionAlgorithm = how->ContentEncryptionAlgorithm;
        info.cRecipients = count;
        info.rgpRecipients = infos.data();
        const OwnedMessage message = encodeEnveloped(info, nullptr);
        message->update({data, dataSize}, true);
        message->parameter(CMSG_CONTENT_PARAM, 0, Answer(buffer, size));
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
        by("CryptVerifyDetachedMessageSignature", verifyDetachedMessageSignature),
        by("CryptVerifyMessageSignature", verifyMessageSignature),
    };
    return all;
}

}  // namespace Corvane::Platform::Messages
