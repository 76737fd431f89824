// The key that encrypts a message's content: how it is made, given to recipients and received, by the
// system's calls and the functions that providers registered; and the work with it.
#pragma once

#include "signer.h"

namespace Corvane::Platform::Messages {

struct Recipient {
    Identity identity;
    AlgorithmId keyEncryption;
    Bytes encryptedKey;
};

// CryptEncrypt or CryptDecrypt over content that comes in pieces of any size.
class ContentCipher {
public:
    ContentCipher(CryptKey key, bool isEncryption);
    // The output for what came; a part of a block waits for more.
    Bytes process(View bytes, bool isFinal);
    // Of content of that size when it is encrypted.
    std::uint64_t encryptedSize(std::uint64_t size) const;

private:
    CryptKey key_;
    bool isEncryption_;
    std::size_t block_;  // in bytes
    Bytes waiting_;
};

// A new key for the algorithm, whose parameters are filled in, encrypted for every recipient.
class NewContentKey {
public:
    explicit NewContentKey(const CMSG_ENVELOPED_ENCODE_INFO& info);

    const AlgorithmId& algorithm() const { return algorithm_; }
    const std::vector<Recipient>& recipients() const { return recipients_; }
    CryptKey take() { return std::move(key_); }

private:
    void make(CMSG_CONTENT_ENCRYPT_INFO& info);
    void giveTo(CMSG_CONTENT_ENCRYPT_INFO& info, const CERT_INFO& certificate, DWORD index);

    AlgorithmId algorithm_;
    CryptKey key_;
    std::vector<Recipient> recipients_;
};

CryptKey receiveContentKey(const AlgorithmId& content, const Recipient& recipient, HCRYPTPROV provider,
                           DWORD spec);

}  // namespace Corvane::Platform::Messages
