// The functions that stand in for those of crypt32: a jump to each is put where the system's own begins, so
// that what of crypt32 is made of these reaches them, too.
#include "message.h"

namespace Corvane::Platform::Messages {
namespace {

// Nobody here has messages of the system's own.
Message& messageOf(const void* handle) {
    return *static_cast<Message*>(const_cast<void*>(handle));
}

template <class Make>
HCRYPTMSG opened(Make make) {
    HCRYPTMSG handle = nullptr;
    succeeds([&] { handle = make().release(); });
    return handle;
}

HCRYPTMSG WINAPI openToEncode(DWORD, DWORD flags, DWORD type, const void* info, LPSTR,
                              PCMSG_STREAM_INFO stream) {
    return opened([&] {
        return type == CMSG_SIGNED
                   ? encodeSigned(flags, *static_cast<const CMSG_SIGNED_ENCODE_INFO*>(info), stream)
                   : encodeEnveloped(*static_cast<const CMSG_ENVELOPED_ENCODE_INFO*>(info), stream);
    });
}

HCRYPTMSG WINAPI openToDecode(DWORD, DWORD, DWORD, HCRYPTPROV_LEGACY, PCERT_INFO, PCMSG_STREAM_INFO stream) {
    return opened([&] { return decode(stream); });
}

HCRYPTMSG WINAPI duplicate(HCRYPTMSG handle) {
    ++messageOf(handle).references;
    return handle;
}

BOOL WINAPI close(HCRYPTMSG handle) {
    const DWORD error = ::GetLastError();
    if (handle && --messageOf(handle).references == 0)
        delete &messageOf(handle);
    ::SetLastError(error);
    return TRUE;
}

BOOL WINAPI update(HCRYPTMSG handle, const BYTE* data, DWORD size, BOOL isFinal) {
    return succeeds([&] { messageOf(handle).update(View(data, size), isFinal != FALSE); });
}

BOOL WINAPI getParam(HCRYPTMSG handle, DWORD type, DWORD index, void* buffer, DWORD* size) {
    return succeeds([&] { give(buffer, size, messageOf(handle).parameter(type, index)); });
}

BOOL WINAPI control(HCRYPTMSG handle, DWORD, DWORD type, const void* argument) {
    return succeeds([&] { messageOf(handle).control(type, argument); });
}

// A name that stands for a key identifier, which is then its last value, finds by that, as on Windows.
PCCERT_CONTEXT WINAPI getSubjectCertificate(HCERTSTORE store, DWORD encoding, PCERT_INFO id) {
    const View name = viewOf(id->Issuer);
    const Bytes mark = oid(Oid::keyIdentifierName);
    const auto found = std::search(name.begin(), name.end(), mark.begin(), mark.end());
    if (found == name.end())
        return ::CertFindCertificateInStore(store, encoding, 0, CERT_FIND_SUBJECT_CERT, id, nullptr);
    const auto at = static_cast<std::size_t>(found - name.begin()) + mark.size();
    const View key = Reader(name.subspan(at)).read(Tag::octetString);
    CRYPT_DATA_BLOB wanted{lengthOf(key), const_cast<BYTE*>(key.data())};
    return ::CertFindCertificateInStore(store, encoding, 0, CERT_FIND_KEY_IDENTIFIER, &wanted, nullptr);
}

// Windows finds the function that a provider registered by the key's algorithm.
BOOL WINAPI exportPublicKeyInfo(HCRYPTPROV_OR_NCRYPT_KEY_HANDLE provider, DWORD spec, DWORD encoding,
                                PCERT_PUBLIC_KEY_INFO info, DWORD* size) {
    return succeeds([&] {
        CryptKey key;
        must(::CryptGetUserKey(provider, spec, key.put()));
        const auto* known =
            Gost::findAlgorithm(numberOf([&](BYTE* value, DWORD* room) {
                                    return ::CryptGetKeyParam(key.get(), KP_ALGID, value, room, 0);
                                }),
                                &Gost::Algorithm::keyId);
        must(::CryptExportPublicKeyInfoEx(provider, spec, encoding,
                                          known ? const_cast<char*>(known->keyOid) : nullptr, 0, nullptr,
                                          info, size));
    });
}

// mov rax, address; jmp rax - and the same with eax.
template <class Function>
void put(const char* name, Function* function) {
    const auto address = reinterpret_cast<ULONG_PTR>(function);
    Bytes jump(sizeof address == 8 ? 1 : 0, 0x48);
    jump.push_back(0xB8);
    append(jump, viewOfStructure(address));
    append(jump, Bytes{0xFF, 0xE0});
    void* const place = reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"crypt32"), name));
    DWORD protection = 0;
    ::VirtualProtect(place, jump.size(), PAGE_EXECUTE_READWRITE, &protection);
    std::ranges::copy(jump, static_cast<BYTE*>(place));
    ::VirtualProtect(place, jump.size(), protection, &protection);
}

}  // namespace
}  // namespace Corvane::Platform::Messages

// Whoever loads the module keeps it.
BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    using namespace Corvane::Platform::Messages;
    if (reason == DLL_PROCESS_ATTACH) {
        put("CertGetSubjectCertificateFromStore", getSubjectCertificate);
        put("CryptExportPublicKeyInfo", exportPublicKeyInfo);
        put("CryptMsgClose", close);
        put("CryptMsgControl", control);
        put("CryptMsgDuplicate", duplicate);
        put("CryptMsgGetParam", getParam);
        put("CryptMsgOpenToDecode", openToDecode);
        put("CryptMsgOpenToEncode", openToEncode);
        put("CryptMsgUpdate", update);
    }
    return TRUE;
}
