// The functions that stand in for those of crypt32, under shorter names.
#pragma once

#include "message.h"

namespace Corvane::Platform::Messages {

decltype(::CryptMsgOpenToEncode) openToEncode;
decltype(::CryptMsgOpenToDecode) openToDecode;
decltype(::CryptMsgClose) close;
decltype(::CryptMsgUpdate) update;
decltype(::CryptMsgGetParam) getParam;
decltype(::CryptMsgControl) control;
decltype(::CertOpenStore) openStore;
// A name that stands for a key identifier finds by that, as on Windows.
decltype(::CertGetSubjectCertificateFromStore) getSubjectCertificate;

// ---- simplified.cpp
decltype(::CryptSignMessage) signMessage;
decltype(::CryptVerifyMessageSignature) verifyMessageSignature;
decltype(::CryptVerifyDetachedMessageSignature) verifyDetachedMessageSignature;
decltype(::CryptGetMessageSignerCount) getMessageSignerCount;
decltype(::CryptEncryptMessage) encryptMessage;
decltype(::CryptExportPublicKeyInfo) exportPublicKeyInfo;

}  // namespace Corvane::Platform::Messages
