// CryptMsg...: handles, and what they are asked.
#include "functions.h"

#include <map>
#include <mutex>

namespace Corvane::Platform::Messages {
namespace {

// Messages that others opened are theirs: CryptQueryObject's, for instance.
class OpenMessages {
public:
    HCRYPTMSG add(OwnedMessage message) {
        const std::lock_guard lock(mutex_);
        const HCRYPTMSG handle = message.get();
        messages_[handle] = std::move(message);
        return handle;
    }
    Message* find(HCRYPTMSG handle) {
        const std::lock_guard lock(mutex_);
        const auto found = messages_.find(handle);
        return found == messages_.end() ? nullptr : found->second.get();
    }
    void remove(HCRYPTMSG handle) {
        const std::lock_guard lock(mutex_);
        messages_.erase(handle);
    }

private:
    std::mutex mutex_;
    std::map<HCRYPTMSG, OwnedMessage> messages_;
};

OpenMessages& open() {
    static OpenMessages messages;
    return messages;
}

// What is asked before the first bytes told the type.
class UnknownDecoder : public Message {
public:
    UnknownDecoder(bool isDetached, const CMSG_STREAM_INFO* stream)
        : isDetached_(isDetached),
          hasStream_(stream != nullptr),
          stream_(stream ? *stream : CMSG_STREAM_INFO{}) {}

    void update(View bytes, bool isFinal) override {
        if (known_)
            return known_->update(bytes, isFinal);
        append(pending_, bytes);
        try {
            known_ = make();
        } catch (const Truncated&) {
            if (isFinal)
                throw;
            return;
        }
        const Bytes all = std::move(pending_);
        known_->update(all, isFinal);
    }
    void parameter(DWORD type, DWORD index, Answer answer) override {
        known().parameter(type, index, answer);
    }
    void control(DWORD flags, DWORD type, const void* argument) override {
        known().control(flags, type, argument);
    }

private:
    Message& known() {
        if (!known_)
            fail(hasStream_ ? CRYPT_E_STREAM_MSG_NOT_READY : CRYPT_E_INVALID_MSG_TYPE);
        return *known_;
    }

    OwnedMessage make() const {
        const View bytes = pending_;
        const Header outer = readHeader(bytes);
        if (outer.tag != Tag::sequence)
            throw BerError("no message");
        const std::string type = oidText(Reader(bytes.subspan(outer.size)).next(Tag::oid).content);
        const CMSG_STREAM_INFO* const stream = hasStream_ ? &stream_ : nullptr;
        if (type == Oid::signedData)
            return decodeSigned(isDetached_, stream);
        if (type == Oid::envelopedData)
            return decodeEnveloped(stream);
        fail(CRYPT_E_INVALID_MSG_TYPE);
    }

    bool isDetached_, hasStream_;
    CMSG_STREAM_INFO stream_;
    Bytes pending_;
    OwnedMessage known_;
};

HCERTSTORE storeOf(Message& message) {
    const HCERTSTORE store = must(::CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr));
    DWORD count = 0;
    DWORD size = sizeof count;
    message.parameter(CMSG_CERT_COUNT_PARAM, 0, Answer(&count, &size));
    for (DWORD i = 0; i < count; ++i) {
        message.parameter(CMSG_CERT_PARAM, i, Answer(nullptr, &size));
        Bytes certificate(size);
        message.parameter(CMSG_CERT_PARAM, i, Answer(certificate.data(), &size));
        // What is no X.509 certificate stays out, as on Windows.
        ::CertAddEncodedCertificateToStore(store, X509_ASN_ENCODING, certificate.data(), size,
                                           CERT_STORE_ADD_USE_EXISTING, nullptr);
    }
    return store;
}

}  // namespace

HCRYPTMSG WINAPI openToEncode(DWORD encoding, DWORD flags, DWORD type, const void* info, LPSTR innerType,
                              PCMSG_STREAM_INFO stream) {
    HCRYPTMSG handle = nullptr;
    succeeds([&] {
        if (!(encoding & PKCS_7_ASN_ENCODING) || !info ||
            (innerType && std::string_view(innerType) != Oid::data))
            fail(E_INVALIDARG);
        if (type == CMSG_SIGNED)
            handle =
                open().add(encodeSigned(flags, *static_cast<const CMSG_SIGNED_ENCODE_INFO*>(info), stream));
        else if (type == CMSG_ENVELOPED)
            handle =
                open().add(encodeEnveloped(*static_cast<const CMSG_ENVELOPED_ENCODE_INFO*>(info), stream));
        else
            fail(CRYPT_E_INVALID_MSG_TYPE);
    });
    return handle;
}

HCRYPTMSG WINAPI openToDecode(DWORD encoding, DWORD flags, DWORD type, HCRYPTPROV_LEGACY, PCERT_INFO,
                              PCMSG_STREAM_INFO stream) {
    HCRYPTMSG handle = nullptr;
    succeeds([&] {
        if (!(encoding & PKCS_7_ASN_ENCODING) || type != 0)
            fail(E_INVALIDARG);
        auto message = std::make_unique<UnknownDecoder>((flags & CMSG_DETACHED_FLAG) != 0, stream);
        message->isStream = stream != nullptr;
        handle = open().add(std::move(message));
    });
    return handle;
}

BOOL WINAPI close(HCRYPTMSG handle) {
    if (!handle)
        return TRUE;
    if (!open().find(handle))
        return ::CryptMsgClose(handle);
    const DWORD error = ::GetLastError();
    open().remove(handle);
    ::SetLastError(error);
    return TRUE;
}

BOOL WINAPI update(HCRYPTMSG handle, const BYTE* data, DWORD size, BOOL isFinal) {
    Message* const message = open().find(handle);
    if (!message)
        return ::CryptMsgUpdate(handle, data, size, isFinal);
    return succeeds([&] { message->apply(View(data, size), isFinal != FALSE); });
}

BOOL WINAPI getParam(HCRYPTMSG handle, DWORD type, DWORD index, void* buffer, DWORD* size) {
    Message* const message = open().find(handle);
    if (!message)
        return ::CryptMsgGetParam(handle, type, index, buffer, size);
    return succeeds([&] { message->parameter(type, index, Answer(buffer, size)); });
}

BOOL WINAPI control(HCRYPTMSG handle, DWORD flags, DWORD type, const void* argument) {
    Message* const message = open().find(handle);
    if (!message)
        return ::CryptMsgControl(handle, flags, type, argument);
    return succeeds([&] { argument ? message->control(flags, type, argument) : fail(E_INVALIDARG); });
}

HCERTSTORE WINAPI openStore(LPCSTR provider, DWORD encoding, HCRYPTPROV_LEGACY context, DWORD flags,
                            const void* argument) {
    Message* const message =
        provider == CERT_STORE_PROV_MSG ? open().find(const_cast<void*>(argument)) : nullptr;
    if (!message)
        return ::CertOpenStore(provider, encoding, context, flags, argument);
    HCERTSTORE store = nullptr;
    succeeds([&] { store = storeOf(*message); });
    return store;
}

PCCERT_CONTEXT WINAPI getSubjectCertificate(HCERTSTORE store, DWORD encoding, PCERT_INFO id) {
    Bytes keyIdentifier;
    const bool isName =
        id && succeeds([&] {
            Reader name = Reader(viewOf(id->Issuer)).enter(Tag::sequence);
            Reader attribute = name.enter(Tag::set).enter(Tag::sequence);
            if (name.atEnd() && oidText(attribute.next(Tag::oid).content) == Oid::keyIdentifierName)
                keyIdentifier = octets(attribute.next(Tag::octetString));
        });
    if (!isName || keyIdentifier.empty())
        return ::CertGetSubjectCertificateFromStore(store, encoding, id);
    const CRYPT_DATA_BLOB blob{sizeOf(keyIdentifier), keyIdentifier.data()};
    return ::CertFindCertificateInStore(store, encoding, 0, CERT_FIND_KEY_IDENTIFIER, &blob, nullptr);
}

}  // namespace Corvane::Platform::Messages
