// The arithmetic, by libgcrypt. Byte orders are those of certificates and messages: keys little-endian, a
// public key X then Y (RFC 4491); a digest as the hash gives it; a signature s then r, big-endian.
#pragma once

#include "../ber/ber.h"

#include <gcrypt.h>

#include <memory>
#include <string>

namespace Corvane::Platform::Gost {

// To be called before anything else here; any number of times.
void startArithmetic();
Bytes randomBytes(std::size_t size);

// Below the order of every curve of that size, since its highest byte is 0.
Bytes makePrivateKey(std::size_t size);
Bytes publicKey(const std::string& curve, View privateKey);
Bytes sign(const std::string& curve, View privateKey, View digest);
bool verify(const std::string& curve, View publicKey, View digest, View signature);

// VKO GOST R 34.10-2001 (RFC 4357, 5.2) or -2012 (RFC 7836, 4.3.1), by the hash: a key of 32 bytes.
Bytes agree(const std::string& curve, View privateKey, View publicKey, View ukm, int digest);

// CryptoPro key wrap (RFC 4357, 6.3). `substitution` is the identifier of the cipher's parameters.
struct WrappedKey {
    Bytes encrypted;
    Bytes mac;
};
WrappedKey wrap(const std::string& substitution, View keyEncryptionKey, View ukm, View key);
// Empty where the code does not agree.
Bytes unwrap(const std::string& substitution, View keyEncryptionKey, View ukm, const WrappedKey& wrapped);

template <auto Free>
struct Release {
    void operator()(auto* object) const { Free(object); }
};
using Cipher = std::unique_ptr<gcry_cipher_handle, Release<::gcry_cipher_close>>;
// GOST 28147-89: `mode` of libgcrypt; content is encrypted with key meshing (RFC 4357, 2.3.2).
Cipher openCipher(const std::string& substitution, int mode, bool meshing, View key, View iv);

// The whole of what is encrypted, without meshing.
Bytes transform(const std::string& substitution, int mode, View key, View iv, View data, bool encrypt);

}  // namespace Corvane::Platform::Gost
