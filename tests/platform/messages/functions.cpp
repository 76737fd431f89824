// CryptMsg...: handles, and what they are asked.
#include "functions.h"

#include "../handles.h"

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

}  // namespace

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
        if (type != 0)
            fail(E_INVALIDARG);
        return decode((flags & CMSG_DETACHED_FLAG) != 0, stream);
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
    if (!message)
        return ::CryptMsgUpdate(handle, data, size, isFinal);
    return succeeds([&] { message->apply(View(data, size), isFinal != FALSE); });
}

BOOL WINAPI getParam(HCRYPTMSG handle, DWORD type, DWORD index, void* buffer, DWORD* size) {
    Message* const message = find(handle);
    if (!message)
        return ::CryptMsgGetParam(handle, type, index, buffer, size);
    return succeeds([&] { message->parameter(type, index, Answer(buffer, size)); });
}

BOOL WINAPI control(HCRYPTMSG handle, DWORD flags, DWORD type, const void* argument) {
    Message* const message = find(handle);
    if (!message)
        return ::CryptMsgControl(handle, flags, type, argument);
    return succeeds([&] { argument ? message->control(type, argument) : fail(E_INVALIDARG); });
}

HCERTSTORE WINAPI openStore(LPCSTR provider, DWORD encoding, HCRYPTPROV_LEGACY context, DWORD flags,
                            const void* argument) {
    Message* const message = provider == CERT_STORE_PROV_MSG ? find(argument) : nullptr;
    if (!message)
        return ::CertOpenStore(provider, encoding, context, flags, argument);
    HCERTSTORE store = nullptr;
    succeeds([&] {
        const DWORD count = numberOf([&](BYTE* number, DWORD* size) {
            return message->parameter(CMSG_CERT_COUNT_PARAM, 0, Answer(number, size)), TRUE;
        });
        store = must(::CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr));
        for (DWORD i = 0; i < count; ++i) {
            const Bytes certificate = filled([&](BYTE* buffer, DWORD* size) {
                return message->parameter(CMSG_CERT_PARAM, i, Answer(buffer, size)), TRUE;
            });
            // What is no X.509 certificate stays out, as on Windows.
            ::CertAddEncodedCertificateToStore(store, X509_ASN_ENCODING, certificate.data(),
                                               lengthOf(certificate), CERT_STORE_ADD_USE_EXISTING, nullptr);
        }
    });
    return store;
}

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
    if (!keyIdentifier.cbData)
        return ::CertGetSubjectCertificateFromStore(store, encoding, id);
    return ::CertFindCertificateInStore(store, encoding, 0, CERT_FIND_KEY_IDENTIFIER, &keyIdentifier,
                                        nullptr);
}

}  // namespace Corvane::Platform::Messages
