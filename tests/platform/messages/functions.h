// The functions that stand in for those of crypt32, with its declarations.
#pragma once

#include "message.h"

namespace Corvane::Platform::Messages {

// ---- messages.cpp
HCRYPTMSG WINAPI openToEncode(DWORD encoding, DWORD flags, DWORD type, const void* info, LPSTR innerType,
                              PCMSG_STREAM_INFO stream);
HCRYPTMSG WINAPI openToDecode(DWORD encoding, DWORD flags, DWORD type, HCRYPTPROV_LEGACY provider,
                              PCERT_INFO recipient, PCMSG_STREAM_INFO stream);
BOOL WINAPI close(HCRYPTMSG handle);
BOOL WINAPI update(HCRYPTMSG handle, const BYTE* data, DWORD size, BOOL isFinal);
BOOL WINAPI getParam(HCRYPTMSG handle, DWORD type, DWORD index, void* buffer, DWORD* size);
BOOL WINAPI control(HCRYPTMSG handle, DWORD flags, DWORD type, const void* argument);
HCERTSTORE WINAPI openStore(LPCSTR provider, DWORD encoding, HCRYPTPROV_LEGACY context, DWORD flags,
                            const void* argument);

// A name that stands for a key identifier finds by that, as on Windows.
PCCERT_CONTEXT WINAPI getSubjectCertificate(HCERTSTORE store, DWORD encoding, PCERT_INFO id);

// ---- simplified.cpp
BOOL WINAPI signMessage(PCRYPT_SIGN_MESSAGE_PARA how, BOOL isDetached, DWORD count, const BYTE* data[],
                        DWORD sizes[], BYTE* buffer, DWORD* size);
BOOL WINAPI verifyMessageSignature(PCRYPT_VERIFY_MESSAGE_PARA how, DWORD index, const BYTE* bytes,
                                   DWORD messageSize, BYTE* content, DWORD* contentSize,
                                   PCCERT_CONTEXT* signer);
BOOL WINAPI verifyDetachedMessageSignature(PCRYPT_VERIFY_MESSAGE_PARA how, DWORD index, const BYTE* bytes,
                                           DWORD messageSize, DWORD count, const BYTE* data[], DWORD sizes[],
                                           PCCERT_CONTEXT* signer);
LONG WINAPI getMessageSignerCount(DWORD encoding, const BYTE* bytes, DWORD size);
BOOL WINAPI encryptMessage(PCRYPT_ENCRYPT_MESSAGE_PARA how, DWORD count, PCCERT_CONTEXT recipients[],
                           const BYTE* data, DWORD dataSize, BYTE* buffer, DWORD* size);
BOOL WINAPI exportPublicKeyInfo(HCRYPTPROV_OR_NCRYPT_KEY_HANDLE provider, DWORD spec, DWORD encoding,
                                PCERT_PUBLIC_KEY_INFO info, DWORD* size);

}  // namespace Corvane::Platform::Messages
